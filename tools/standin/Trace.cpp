#include "Trace.h"

#include "Texts.h"

#include <bit>
#include <cstdio>
#include <glib.h>
#include <iostream>
#include <memory>
#include <string>

namespace standin {

namespace {

constexpr std::size_t shownBytes = 72;
constexpr std::size_t shownEntries = 12;

using GlibText = std::unique_ptr<gchar, decltype(&g_free)>;

// Without anything that a terminal could take for more than a character.
std::string quoted(std::string_view text)
{
    const auto shown = cutText(text, shownBytes);
    const GlibText valid(g_utf8_make_valid(shown.data(), static_cast<gssize>(shown.size())), g_free);
    std::string line = "\"";
    for (const char* at = valid.get(); *at != '\0'; at = g_utf8_next_char(at)) {
        const auto character = g_utf8_get_char(at);
        if (character == '"' || character == '\\') {
            line += {'\\', *at};
        } else if (g_unichar_isprint(character) != 0) {
            line.append<const char*>(at, g_utf8_next_char(at));
        } else {
            char code[16];
            std::snprintf(code, sizeof code, "\\u{%x}", character);
            line += code;
        }
    }
    return line + "\"" + (shown.size() == text.size() ? "" : "...(" + std::to_string(text.size()) + " bytes)");
}

// The first of the entries, and how many there are when these are not all.
template <class Entries, class Describe>
std::string listText(const Entries& entries, char open, char close, const Describe& describe)
{
    std::string text(1, open);
    std::size_t shown = 0;
    for (const auto& entry : entries) {
        if (shown == shownEntries) {
            text += ", ...(" + std::to_string(entries.size()) + " in all)";
            break;
        }
        text += (shown++ == 0 ? "" : ", ") + describe(entry);
    }
    return text + close;
}

std::string mapEntryText(const StringMap::value_type& entry)
{
    const auto& [key, value] = entry;
    const bool secret = key == "token" || key.starts_with("securityAnswer");
    return quoted(key) + ": " + (secret ? "(hidden)" : quoted(value));
}

std::string valueText(const Parameter& parameter)
{
    const std::string_view value = parameter.value;
    switch (parameter.kind) {
    case Kind::Secret:
        return value.empty() ? "\"\"" : "(hidden)";
    case Kind::Bool:
        return readNumber<std::uint8_t>(value) != 0 ? "true" : "false";
    case Kind::Short:
        return std::to_string(readNumber<std::int16_t>(value));
    case Kind::Int:
        return std::to_string(readNumber<std::int32_t>(value));
    case Kind::Long:
        return std::to_string(readNumber<std::int64_t>(value));
    case Kind::Double:
        return std::to_string(std::bit_cast<double>(readNumber<std::uint64_t>(value)));
    case Kind::Map:
        return listText(decodeMap(value), '{', '}', mapEntryText);
    case Kind::Array:
        return listText(decodeArray(value), '[', ']', quoted);
    case Kind::Items:
        return listText(decodeArray(value), '[', ']',
                        [](std::string_view item) { return std::to_string(item.size()) + " bytes"; });
    case Kind::Text:
    case Kind::Recipient:
        break;
    }
    return quoted(value);
}

std::string timeStamp()
{
    const std::unique_ptr<GDateTime, decltype(&g_date_time_unref)> now(g_date_time_new_now_utc(), g_date_time_unref);
    return GlibText(g_date_time_format(now.get(), "%FT%T.%fZ"), g_free).get();
}

} // namespace

void Trace::print(int connection, std::string_view direction, const Message& message)
{
    const std::lock_guard lock(mutex_);
    if (!on_) {
        return;
    }
    std::cout << timeStamp() << " #" << connection << " " << direction << " " << lettersOf(message.code);
    for (const auto& parameter : message.parameters) {
        std::cout << " " << lettersOf(parameter.tag) << "=" << valueText(parameter);
    }
    std::cout << std::endl;
    if (!std::cout) {
        std::cerr << "tarn-standin: the trace cannot be written and ends" << std::endl;
        on_ = false;
    }
}

} // namespace standin
