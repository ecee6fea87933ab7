#include "Text.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utf8.h>

namespace tarn {

namespace {

char lowerCaseLetter(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

template <class Shown>
std::string show(std::string_view utf8, Shown shown)
{
    std::u32string characters = toCharacters(utf8);
    std::ranges::replace_if(characters, std::not_fn(shown), U'?');
    return toUtf8(characters);
}

} // namespace

std::u32string toCharacters(std::string_view utf8)
{
    std::string valid;
    utf8::replace_invalid(utf8.begin(), utf8.end(), std::back_inserter(valid));
    std::u32string characters;
    utf8::utf8to32(valid.begin(), valid.end(), std::back_inserter(characters));
    return characters;
}

std::string toUtf8(std::u32string_view characters)
{
    std::string text;
    utf8::utf32to8(characters.begin(), characters.end(), std::back_inserter(text));
    return text;
}

std::string utf8Of(const std::string& bytes)
{
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        return bytes.substr(3);
    }
    const bool littleEndian = bytes.starts_with("\xFF\xFE");
    if (!littleEndian && !bytes.starts_with("\xFE\xFF")) {
        return bytes;
    }
    std::u16string units;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[littleEndian ? i : i + 1]);
        const auto high = static_cast<unsigned char>(bytes[littleEndian ? i + 1 : i]);
        units += static_cast<char16_t>(low | high << 8);
    }
    std::string text;
    utf8::utf16to8(units.begin(), units.end(), std::back_inserter(text));
    return text;
}

std::vector<std::string> split(std::string_view text, std::string_view delimiter)
{
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(delimiter, start)) != text.npos; start = end + delimiter.size()) {
        pieces.emplace_back(text.substr(start, end - start));
    }
    pieces.emplace_back(text.substr(start));
    return pieces;
}

std::vector<std::string> addresses(const std::vector<std::string>& options)
{
    std::vector<std::string> all;
    for (const auto& option : options) {
        std::ranges::move(split(option, ";"), std::back_inserter(all));
    }
    return all;
}

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), lowerCaseLetter);
    return lower;
}

bool sameIgnoringCase(std::string_view left, std::string_view right)
{
    return lowerCase(left) == lowerCase(right);
}

bool isControl(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x061C || character == 0x200E ||
           character == 0x200F || (character >= 0x2028 && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x206F);
}

std::string printable(std::string_view utf8)
{
    std::string line(utf8);
    std::ranges::replace(line, '\n', ' ');
    std::ranges::replace(line, '\t', ' ');
    return show(line, [](char32_t character) { return !isControl(character); });
}

std::string printableLines(std::string_view utf8)
{
    std::string text;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        if (!utf8.substr(i).starts_with("\r\n")) {
            text += utf8[i];
        }
    }
    return show(text,
                [](char32_t character) { return !isControl(character) || character == '\n' || character == '\t'; });
}

std::size_t characterCount(std::string_view utf8)
{
    return toCharacters(utf8).size();
}

} // namespace tarn
