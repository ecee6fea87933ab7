#pragma once

#include <string>
#include <string_view>

namespace tarn {

// The characters of a UTF-8 text; ill-formed bytes become U+FFFD.
std::u32string toCharacters(std::string_view utf8);

// Compares as mail addresses are compared in practice: without regard to case.
bool sameIgnoringCase(std::string_view left, std::string_view right);

// Characters that control a terminal or the direction of writing.
bool isControl(char32_t character);

// What may be shown of a text from outside: control characters become "?". `printable` makes one line of it,
// `printableLines` keeps its lines, each ended by "\n" alone.
std::string printable(std::string_view utf8);
std::string printableLines(std::string_view utf8);

} // namespace tarn
