#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace Platform {

namespace {

constexpr char32_t replacement = 0xFFFD;

// Takes one code point off the front. Ill-formed input gives U+FFFD for each longest prefix of a well-formed sequence.
char32_t takeCodePoint(std::string_view& text)
{
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byteAt(0);
    std::size_t length = 1;
    char32_t value = first;
    unsigned char low = 0x80; // bounds of the second byte
    unsigned char high = 0xBF;
    if (first >= 0xC2 && first <= 0xDF) {
        length = 2;
        value = first & 0x1Fu;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3;
        value = first & 0x0Fu;
        low = first == 0xE0 ? 0xA0 : low;   // no overlong form
        high = first == 0xED ? 0x9F : high; // no surrogate
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4;
        value = first & 0x07u;
        low = first == 0xF0 ? 0x90 : low;
        high = first == 0xF4 ? 0x8F : high; // not beyond U+10FFFF
    } else if (first >= 0x80) {
        value = replacement;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (i == text.size() || byteAt(i) < low || byteAt(i) > high) {
            text.remove_prefix(i);
            return replacement;
        }
        value = value << 6 | (byteAt(i) & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    text.remove_prefix(length);
    return value;
}

char32_t takeCodePoint(WideView& text)
{
    const char32_t first = text[0];
    text.remove_prefix(1);
    if (first < 0xD800 || first > 0xDFFF) {
        return first;
    }
    const bool paired = first < 0xDC00 && !text.empty() && text[0] >= 0xDC00 && text[0] <= 0xDFFF;
    if (!paired) {
        return replacement;
    }
    const char32_t second = text[0];
    text.remove_prefix(1);
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

template <class Unit>
struct Encoded
{
    std::array<Unit, 4> units;
    std::size_t count;
};

void encode(char32_t value, Encoded<WideChar>& out)
{
    if (value < 0x10000) {
        out = {{static_cast<WideChar>(value)}, 1};
    } else {
        value -= 0x10000;
        out = {{static_cast<WideChar>(0xD800 + (value >> 10)), static_cast<WideChar>(0xDC00 + (value & 0x3FF))}, 2};
    }
}

void encode(char32_t value, Encoded<char>& out)
{
    const auto trail = [&](int shift) { return static_cast<char>(0x80 | (value >> shift & 0x3F)); };
    if (value < 0x80) {
        out = {{static_cast<char>(value)}, 1};
    } else if (value < 0x800) {
        out = {{static_cast<char>(0xC0 | value >> 6), trail(0)}, 2};
    } else if (value < 0x10000) {
        out = {{static_cast<char>(0xE0 | value >> 12), trail(6), trail(0)}, 3};
    } else {
        out = {{static_cast<char>(0xF0 | value >> 18), trail(12), trail(6), trail(0)}, 4};
    }
}

// Loops over a block, whose size is known, become vector instructions.
constexpr std::size_t blockSize = 16;

template <class Unit>
bool isAsciiBlock(const Unit* units)
{
    std::make_unsigned_t<Unit> all = 0;
    for (std::size_t i = 0; i < blockSize; ++i) {
        all |= static_cast<std::make_unsigned_t<Unit>>(units[i]);
    }
    return all < 0x80;
}

template <class From, class To>
void copyBlock(const From* units, To* __restrict out)
{
    for (std::size_t i = 0; i < blockSize; ++i) {
        out[i] = static_cast<To>(units[i]);
    }
}

template <class Unit>
bool isAscii(Unit unit)
{
    return static_cast<std::make_unsigned_t<Unit>>(unit) < 0x80;
}

// Takes the ASCII units off the front of a text, `most` at the most, and writes them unless `out` is null.
template <class From, class To>
std::size_t takeAscii(std::basic_string_view<From>& text, To* out, std::size_t most)
{
    const std::size_t end = std::min(text.size(), most);
    std::size_t count = 0;
    for (; end - count >= blockSize && isAsciiBlock(text.data() + count); count += blockSize) {
        if (out != nullptr) {
            copyBlock(text.data() + count, out + count);
        }
    }
    for (; count < end && isAscii(text[count]); ++count) {
        if (out != nullptr) {
            out[count] = static_cast<To>(text[count]);
        }
    }
    text.remove_prefix(count);
    return count;
}

template <class From, class To>
std::int32_t convert(const From* text, std::int32_t count, To* out, std::int32_t capacity)
{
    std::basic_string_view<From> rest =
        count < 0 ? std::basic_string_view<From>(text, std::char_traits<From>::length(text) + 1)
                  : std::basic_string_view<From>(text, static_cast<std::size_t>(count));
    const bool writes = capacity > 0;
    const std::size_t room = writes ? static_cast<std::size_t>(capacity) : SIZE_MAX;
    std::size_t written = 0;
    Encoded<To> next{};
    while (!rest.empty()) {
        // Most texts are ASCII for long stretches.
        if (isAscii(rest[0]) && written < room) {
            written += takeAscii(rest, writes ? out + written : nullptr, room - written);
            continue;
        }
        encode(takeCodePoint(rest), next);
        if (next.count > room - written) {
            return 0;
        }
        if (writes) {
            std::memcpy(out + written, next.units.data(), next.count * sizeof(To));
        }
        written += next.count;
    }
    return written > INT32_MAX ? 0 : static_cast<std::int32_t>(written);
}

} // namespace

std::int32_t utf8ToWide(const char* text, std::int32_t count, WideChar* out, std::int32_t capacity)
{
    return convert(text, count, out, capacity);
}

std::int32_t wideToUtf8(const WideChar* text, std::int32_t count, char* out, std::int32_t capacity)
{
    return convert(text, count, out, capacity);
}

} // namespace Platform
