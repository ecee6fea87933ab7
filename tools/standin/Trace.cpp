#include "Trace.h"

#include <algorithm>
#include <array>
#include <bit>
#include <glib.h>
#include <iostream>
#include <string>

namespace standin {

namespace {

constexpr std::size_t shownBytes = 72;
constexpr std::size_t shownEntries = 12;
constexpr std::array secretTags = {tag("ky"), tag("pw"), tag("pp"), tag("sk"), tag("ku")};

std::string_view kindName(Kind kind)
{
    switch (kind) {
    case Kind::Text:
        return "text";
    case Kind::Bool:
        return "bool";
    case Kind::Short:
        return "short";
    case Kind::Int:
        return "int";
    case Kind::Long:
        return "long";
    case Kind::Double:
        return "double";
    case Kind::Map:
        return "map";
    case Kind::Array:
        return "array";
    case Kind::Items:
        return "items";
    }
    return "";
}

std::string quoted(std::string_view text)
{
    auto size = std::min(text.size(), shownBytes);
    while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        --size;
    const auto shown = text.substr(0, size);
    const bool utf8 = g_utf8_validate(shown.data(), static_cast<gssize>(shown.size()), nullptr);
    std::string line = "\"";
    for (const char c : shown) {
        const auto byte = static_cast<unsigned char>(c);
        constexpr char digits[] = "0123456789abcdef";
        if (c == '\n')
            line += "\\n";
        else if (c == '\r')
            line += "\\r";
        else if (c == '"' || c == '\\')
            line += std::string("\\") + c;
        else if (byte < ' ' || byte == 0x7F || (byte >= 0x80 && !utf8))
            line += std::string("\\x") + digits[byte >> 4] + digits[byte & 15];
        else
            line += c;
    }
    line += '"';
    return size == text.size() ? line : line + "... (" + std::to_string(text.size()) + " bytes)";
}

bool isSecretKey(std::string_view key)
{
    return key == "token" || key.starts_with("securityAnswer");
}

std::string mapText(std::string_view value)
{
    const auto map = decodeMap(value);
    std::string text = "{";
    std::size_t shown = 0;
    for (const auto& [key, entry] : map) {
        if (shown == shownEntries)
            return text + ", ... (" + std::to_string(map.size()) + " entries)}";
        text += (shown++ == 0 ? "" : ", ") + quoted(key) + ": " + (isSecretKey(key) ? "(hidden)" : quoted(entry));
    }
    return text + "}";
}

template <class Show>
std::string listText(std::string_view value, Show show)
{
    std::string text = "[";
    std::size_t count = 0;
    while (!value.empty()) {
        const auto size = static_cast<std::size_t>(readNumber<std::int32_t>(value));
        if (count < shownEntries)
            text += (count == 0 ? "" : ", ") + show(value.substr(4, size));
        value.remove_prefix(4 + size);
        ++count;
    }
    return text + (count > shownEntries ? ", ... (" + std::to_string(count) + " elements)]" : "]");
}

std::string valueText(const Parameter& parameter)
{
    const std::string_view value = parameter.value;
    if (std::ranges::find(secretTags, parameter.tag) != secretTags.end())
        return value.empty() ? "\"\"" : "(hidden)";
    switch (parameter.kind) {
    case Kind::Bool:
        return readNumber<std::uint8_t>(value) ? "true" : "false";
    case Kind::Short:
        return std::to_string(readNumber<std::int16_t>(value));
    case Kind::Int:
        return std::to_string(readNumber<std::int32_t>(value));
    case Kind::Long:
        return std::to_string(readNumber<std::int64_t>(value));
    case Kind::Double:
        return std::to_string(std::bit_cast<double>(readNumber<std::uint64_t>(value)));
    case Kind::Map:
        return mapText(value);
    case Kind::Array:
        return listText(value, quoted);
    case Kind::Items:
        return listText(value, [](std::string_view item) { return std::to_string(item.size()) + " bytes"; });
    case Kind::Text:
        break;
    }
    return quoted(value);
}

} // namespace

void Trace::print(int connection, std::string_view direction, const Message& message)
{
    if (!on_)
        return;
    const auto head = "#" + std::to_string(connection) + " " + std::string(direction) + " ";
    std::cout << head << tagName(message.code) << "\n";
    for (const auto& parameter : message.parameters)
        std::cout << head << "  " << tagName(parameter.tag) << " " << kindName(parameter.kind) << " "
                  << valueText(parameter) << "\n";
    std::cout.flush();
    if (std::cout)
        return;
    std::cerr << "tarn-standin: the trace cannot be written and ends" << std::endl;
    on_ = false;
}

} // namespace standin
