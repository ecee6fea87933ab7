#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

// The tool's texts are UTF-8 throughout. These two go over to single characters and back; ill-formed input becomes
// U+FFFD.
std::u32string toCharacters(std::string_view utf8);
std::string toUtf8(std::u32string_view characters);

// The UTF-8 of a text file's bytes, which a byte order mark may say to be in UTF-16.
std::string utf8Of(const std::string& bytes);

std::vector<std::string> split(std::string_view text, std::string_view delimiter);

// The addresses of options that may each hold several, with ";" between them.
std::vector<std::string> addresses(const std::vector<std::string>& options);

// Compares as mail addresses are compared in practice: ASCII letters without regard to case.
bool sameIgnoringCase(std::string_view left, std::string_view right);
std::string lowerCase(std::string_view text);

// Characters that control a terminal or the direction of writing.
bool isControl(char32_t character);

// What may be shown of a text from outside: control characters become "?". `printable` makes one line of it,
// `printableLines` keeps its lines, each ended by "\n" alone.
std::string printable(std::string_view utf8);
std::string printableLines(std::string_view utf8);

// The number of characters of a UTF-8 text.
std::size_t characterCount(std::string_view utf8);

} // namespace tarn
