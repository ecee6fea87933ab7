#include "Wire.h"

#include <bit>

namespace wire {

std::string integer(std::int64_t value, int size)
{
    std::string bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> shift & 0xFF);
    }
    return bytes;
}

std::string shortInt(std::int64_t value)
{
    return integer(value, 2);
}

std::string int32(std::int64_t value)
{
    return integer(value, 4);
}

std::string int64(std::int64_t value)
{
    return integer(value, 8);
}

std::string float64(double value)
{
    return integer(std::bit_cast<std::int64_t>(value), 8);
}

std::string sequence(const std::vector<std::string>& texts)
{
    std::string bytes;
    for (const std::string& text : texts) {
        bytes += int32(static_cast<std::int64_t>(text.size())) + text;
    }
    return bytes;
}

std::string parameters(const Params& params)
{
    std::string bytes;
    for (const auto& [tag, value] : params) {
        bytes += tag + int32(static_cast<std::int64_t>(value.size())) + value;
    }
    return bytes;
}

std::uint32_t crc(std::string_view bytes)
{
    std::uint32_t value = 0xFFFFFFFF;
    for (const char byte : bytes) {
        value ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            value = value >> 1 ^ (value & 1 ? 0xEDB88320 : 0);
        }
    }
    return ~value;
}

std::string framed(std::string_view code, std::string_view parameterBytes)
{
    std::string bytes("\0\7", 2);
    bytes.append(code).append(parameterBytes).append("\xCE\xDE");
    return bytes + int32(crc(bytes));
}

std::string message(std::string_view code, const Params& params)
{
    return framed(code, parameters(params));
}

std::size_t messageLength(std::string_view bytes)
{
    std::size_t at = 4;
    while (at + 2 <= bytes.size()) {
        if (bytes.substr(at, 2) == "\xCE\xDE") {
            return at + 6 <= bytes.size() ? at + 6 : 0;
        }
        if (at + 6 > bytes.size()) {
            return 0;
        }
        std::size_t length = 0;
        for (const char byte : bytes.substr(at + 2, 4)) {
            length = length << 8 | static_cast<unsigned char>(byte);
        }
        at += 6 + length;
    }
    return 0;
}

} // namespace wire
