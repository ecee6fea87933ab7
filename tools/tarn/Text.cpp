#include "Text.h"

#include "Host.h"
#include <algorithm>
#include <utf8.h>

namespace tarn {

std::u32string toCharacters(std::string_view utf8)
{
    return utf8::utf8to32(utf8::replace_invalid(utf8));
}

bool sameIgnoringCase(std::string_view left, std::string_view right)
{
    return host::foldCase(std::string(left)) == host::foldCase(std::string(right));
}

bool isControl(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x061C || character == 0x200E ||
           character == 0x200F || (character >= 0x2028 && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x206F);
}

std::string printable(std::string_view utf8)
{
    std::string line = printableLines(utf8);
    std::ranges::replace(line, '\n', ' ');
    std::ranges::replace(line, '\t', ' ');
    return line;
}

std::string printableLines(std::string_view utf8)
{
    std::u32string characters;
    for (const char32_t character : toCharacters(utf8)) {
        if (character == '\n' && characters.ends_with(U'\r')) {
            characters.pop_back();
        }
        characters += character;
    }
    const auto hidden = [](char32_t one) { return isControl(one) && one != '\n' && one != '\t'; };
    std::ranges::replace_if(characters, hidden, U'?');
    return utf8::utf32to8(characters);
}

} // namespace tarn
