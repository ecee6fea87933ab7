#include "Text.h"

#include <algorithm>
#include <cstdint>

namespace tarn {

namespace {

constexpr char32_t replacement = 0xFFFD;

// Takes the next character off the front of a not empty text; of ill-formed bytes it takes one.
char32_t takeCharacter(std::string_view& text)
{
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (first < 0x80)
        return first;
    std::size_t following = 0;
    char32_t lowest = 0;
    char32_t value = 0;
    if (first >= 0xC2 && first <= 0xDF) {
        following = 1, lowest = 0x80, value = first & 0x1Fu;
    } else if (first >= 0xE0 && first <= 0xEF) {
        following = 2, lowest = 0x800, value = first & 0x0Fu;
    } else if (first >= 0xF0 && first <= 0xF4) {
        following = 3, lowest = 0x10000, value = first & 0x07u;
    } else {
        return replacement;
    }
    if (text.size() < following)
        return replacement;
    for (std::size_t i = 0; i < following; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0u) != 0x80)
            return replacement;
        value = (value << 6) | (next & 0x3Fu);
    }
    if (value < lowest || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        return replacement;
    text.remove_prefix(following);
    return value;
}

void appendUtf8(std::string& text, char32_t value)
{
    const auto add = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (value < 0x80) {
        add(value);
    } else if (value < 0x800) {
        add(0xC0 | (value >> 6));
        add(0x80 | (value & 0x3F));
    } else if (value < 0x10000) {
        add(0xE0 | (value >> 12));
        add(0x80 | ((value >> 6) & 0x3F));
        add(0x80 | (value & 0x3F));
    } else {
        add(0xF0 | (value >> 18));
        add(0x80 | ((value >> 12) & 0x3F));
        add(0x80 | ((value >> 6) & 0x3F));
        add(0x80 | (value & 0x3F));
    }
}

char lowerCaseLetter(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

} // namespace

WideString toWide(std::string_view utf8)
{
    WideString wide;
    wide.reserve(utf8.size());
    while (!utf8.empty()) {
        const char32_t value = takeCharacter(utf8);
        if (value < 0x10000) {
            wide += static_cast<TarnWideChar>(value);
        } else {
            wide += static_cast<TarnWideChar>(0xD800 + ((value - 0x10000) >> 10));
            wide += static_cast<TarnWideChar>(0xDC00 + ((value - 0x10000) & 0x3FF));
        }
    }
    return wide;
}

std::string toUtf8(std::basic_string_view<TarnWideChar> wide)
{
    std::string utf8;
    utf8.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const auto unit = static_cast<char32_t>(wide[i]);
        const bool paired =
            unit >= 0xD800 && unit <= 0xDBFF && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 && wide[i + 1] <= 0xDFFF;
        if (paired) {
            ++i;
            appendUtf8(utf8, 0x10000 + ((unit - 0xD800) << 10) + (static_cast<char32_t>(wide[i]) - 0xDC00));
        } else {
            appendUtf8(utf8, unit >= 0xD800 && unit <= 0xDFFF ? replacement : unit);
        }
    }
    return utf8;
}

std::vector<std::string> split(std::string_view text, std::string_view delimiter)
{
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(delimiter, start)) != text.npos; start = end + delimiter.size())
        pieces.emplace_back(text.substr(start, end - start));
    pieces.emplace_back(text.substr(start));
    return pieces;
}

std::string join(const std::vector<std::string>& items, std::string_view delimiter)
{
    std::string text;
    for (const auto& item : items) {
        if (&item != &items.front())
            text += delimiter;
        text += item;
    }
    return text;
}

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), lowerCaseLetter);
    return lower;
}

bool sameIgnoringCase(std::string_view left, std::string_view right)
{
    return lowerCase(left) == lowerCase(right);
}

std::string printable(std::string_view utf8)
{
    std::string text;
    while (!utf8.empty()) {
        const char32_t value = takeCharacter(utf8);
        if (value < 0x20 || (value >= 0x7F && value < 0xA0))
            text += value == '\n' || value == '\t' ? ' ' : '?';
        else
            appendUtf8(text, value);
    }
    return text;
}

std::size_t characterCount(std::string_view utf8)
{
    std::size_t count = 0;
    for (; !utf8.empty(); ++count)
        takeCharacter(utf8);
    return count;
}

std::vector<KeyValue> parseMapText(std::string_view text)
{
    std::vector<KeyValue> entries;
    for (const auto& entry : split(text, "; ")) {
        const auto colon = entry.find(": ");
        if (colon != entry.npos)
            entries.push_back({entry.substr(0, colon), entry.substr(colon + 2)});
        else if (!entry.empty() && !entries.empty())
            entries.back().value += "; " + entry; // a value that holds the separator itself
    }
    return entries;
}

} // namespace tarn
