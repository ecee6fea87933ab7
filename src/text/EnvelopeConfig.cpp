#include "text/EnvelopeConfig.h"

#include "text/Conversion.h"
#include "text/Decimal.h"
#include "text/Lists.h"

#include <charconv>
#include <utility>

namespace Text {

namespace {

constexpr std::string_view keyEnd = ": ";
constexpr std::string_view entryEnd = "; ";
constexpr std::string_view codeEnd = "&";

} // namespace

std::string encodeCharCodes(std::string& text)
{
    std::string encoded;
    encoded.reserve(text.size() * 4);
    for (const char byte : text) {
        char digits[4];
        const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<signed char>(byte)).ptr;
        encoded.append(digits, end).append(codeEnd);
    }
    text.clear();
    return encoded;
}

StringMap decodeConfigMap(std::string_view encoded)
{
    std::string plain;
    for (const std::string& piece : splitAtText(encoded, codeEnd)) {
        plain += static_cast<char>(decimal<std::int32_t>(piece) & 0xFF);
    }
    StringMap entries;
    for (const std::string& item : splitAtText(plain, entryEnd)) {
        std::vector<std::string> pieces = splitAtText(item, keyEnd);
        if (pieces.size() == 2) {
            entries.insert_or_assign(std::move(pieces[0]), std::move(pieces[1]));
        }
    }
    return entries;
}

std::string formatConfigMap(const StringMap& entries)
{
    std::string text;
    for (const auto& [key, value] : entries) {
        text.append(key).append(keyEnd).append(value).append(entryEnd);
    }
    return text;
}

void formatConfigMapWide(const StringMap& entries, WideChar* destination)
{
    // Each text ends at its first zero byte, as a text for the caller does.
    std::string text;
    for (const auto& [key, value] : entries) {
        text.append(key.c_str()).append(keyEnd).append(value.c_str()).append(entryEnd);
    }
    utf8IntoWide(text.c_str(), destination);
}

} // namespace Text
