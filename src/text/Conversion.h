#pragma once

#include "platform/Compiler.h"
#include "platform/WideText.h"

#include <cstdint>
#include <string>
#include <string_view>

// Conversions between the texts of the caller (UTF-8 and UTF-16) and those of the library (UTF-8). Ill-formed input is
// replaced, never reported.
namespace Text {

// A caller's text; null counts as empty.
inline std::string_view orEmpty(const char* text)
{
    return text == nullptr ? std::string_view() : std::string_view(text);
}

std::string wideToUtf8(WideView text);

// The same for a caller's zero-terminated text; null counts as empty.
std::string wideToUtf8(const WideChar* text);

// Returns a zero-terminated text in task memory, which the receiver releases; null when it cannot be converted. Throws
// when there is no memory.
WideChar* utf8ToTaskMemWide(const char* text);

// Writes the converted text with its terminator, without a bound. Writes nothing when it cannot be converted.
void utf8IntoWide(const char* text, WideChar* destination);

// Copies a text with its terminator, without a bound, up to its first zero byte.
void copyOut(const std::string& text, char* destination);

// printf-style, without a bound. Returns the number of characters written, or -1.
TARN_PRINTF_FORMAT(2, 3) std::int32_t formatText(char* buffer, const char* format, ...);

} // namespace Text
