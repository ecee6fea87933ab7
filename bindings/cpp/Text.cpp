#include "Text.h"

#include <stdexcept>

namespace tarn::detail {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool isSurrogate(char32_t value)
{
    return value >= 0xD800 && value <= 0xDFFF;
}

// Takes the next character off the front of a text that is not empty; of ill-formed bytes it takes one.
char32_t takeCharacter(std::string_view& text)
{
    struct Form
    {
        unsigned char mask, lead;
        char32_t lowest;
    };
    static constexpr Form forms[] = {{0x80, 0, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};
    const auto first = static_cast<unsigned char>(text.front());
    for (std::size_t following = 0; following < std::size(forms) && following < text.size(); ++following) {
        const Form& form = forms[following];
        if ((first & form.mask) != form.lead) {
            continue;
        }
        char32_t value = first & static_cast<unsigned char>(~form.mask);
        for (std::size_t i = 1; i <= following; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            value = (next & 0xC0) == 0x80 ? (value << 6) | (next & 0x3Fu) : 0xFFFFFFFF;
        }
        if (value >= form.lowest && value <= 0x10FFFF && !isSurrogate(value)) {
            text.remove_prefix(following + 1);
            return value;
        }
    }
    text.remove_prefix(1);
    return replacement;
}

void appendUtf8(std::string& text, char32_t value)
{
    const auto add = [&text](char32_t lead, char32_t bits) { text += static_cast<char>(lead | bits); };
    if (value < 0x80) {
        add(0, value);
        return;
    }
    if (value < 0x800) {
        add(0xC0, value >> 6);
    } else {
        if (value < 0x10000) {
            add(0xE0, value >> 12);
        } else {
            add(0xF0, value >> 18);
            add(0x80, (value >> 12) & 0x3F);
        }
        add(0x80, (value >> 6) & 0x3F);
    }
    add(0x80, value & 0x3F);
}

} // namespace

ClearedVector<TarnWideChar> toWide(std::string_view utf8)
{
    ClearedVector<TarnWideChar> wide;
    wide.reserve(utf8.size() + 1);
    while (!utf8.empty()) {
        const char32_t value = takeCharacter(utf8);
        if (value < 0x10000) {
            wide.push_back(static_cast<TarnWideChar>(value));
        } else {
            wide.push_back(static_cast<TarnWideChar>(0xD800 + ((value - 0x10000) >> 10)));
            wide.push_back(static_cast<TarnWideChar>(0xDC00 + ((value - 0x10000) & 0x3FF)));
        }
    }
    wide.push_back(0);
    return wide;
}

std::string toUtf8(std::basic_string_view<TarnWideChar> wide)
{
    std::string utf8;
    utf8.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const char32_t unit = wide[i];
        const char32_t next = i + 1 < wide.size() ? wide[i + 1] : 0;
        if (unit >= 0xD800 && unit <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF) {
            ++i;
            appendUtf8(utf8, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
        } else {
            appendUtf8(utf8, isSurrogate(unit) ? replacement : unit);
        }
    }
    return utf8;
}

std::vector<std::string> split(std::string_view text, std::string_view delimiter)
{
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = text.find(delimiter, start)) != text.npos; start = end + delimiter.size()) {
        pieces.emplace_back(text.substr(start, end - start));
    }
    pieces.emplace_back(text.substr(start));
    return pieces;
}

std::vector<KeyValue> parseMapText(std::string_view text)
{
    std::vector<KeyValue> entries;
    for (const auto& entry : split(text, "; ")) {
        const auto colon = entry.find(": ");
        if (colon != entry.npos) {
            entries.push_back({entry.substr(0, colon), entry.substr(colon + 2)});
        } else if (!entry.empty() && !entries.empty()) {
            entries.back().value += "; " + entry; // a value that holds the separator itself
        }
    }
    return entries;
}

void refuseZero(std::string_view text)
{
    if (text.find('\0') != text.npos) {
        throw std::invalid_argument("a text for the library holds a zero character, at which it would be cut");
    }
}

std::string addressList(const std::vector<std::string>& addresses)
{
    std::string list;
    for (const auto& address : addresses) {
        if (address.find(';') != address.npos) {
            throw std::invalid_argument("the address \"" + address + "\" holds \";\", which separates addresses");
        }
        list += (&address == &addresses.front() ? "" : ";") + refuseListDelimiter(address);
    }
    return list;
}

const std::string& refuseListDelimiter(const std::string& text)
{
    if (text.find(TARN_LIST_DELIMITER) != text.npos) {
        throw std::invalid_argument("a text holds \"" TARN_LIST_DELIMITER "\", which separates the texts of a list");
    }
    return text;
}

} // namespace tarn::detail
