#pragma once

#include <TarnRemoteClient.h>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

// The tool's texts are UTF-8 throughout; the library's wide texts are UTF-16. These two are the only conversions.
// Ill-formed input becomes U+FFFD.
using WideString = std::basic_string<TarnWideChar>;
WideString toWide(std::string_view utf8);
std::string toUtf8(std::basic_string_view<TarnWideChar> wide);

std::vector<std::string> split(std::string_view text, std::string_view delimiter);
std::string join(const std::vector<std::string>& items, std::string_view delimiter);

// Compares as mail addresses are compared in practice: ASCII letters without regard to case.
bool sameIgnoringCase(std::string_view left, std::string_view right);
std::string lowerCase(std::string_view text);

// What a terminal may show of a text from outside: control characters, which could move its cursor, become "?".
std::string printable(std::string_view utf8);

// The number of characters of a UTF-8 text.
std::size_t characterCount(std::string_view utf8);

struct KeyValue
{
    std::string key;
    std::string value;
};

// Reads the library's map texts: "key: value; " for each entry.
std::vector<KeyValue> parseMapText(std::string_view text);

} // namespace tarn
