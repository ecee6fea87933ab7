#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Merrow {

// An integer as the wire has it: most significant byte first.
template <class Integer>
using BigEndianBytes = std::array<char, sizeof(Integer)>;

template <class Integer>
BigEndianBytes<Integer> toBigEndian(Integer value)
{
    auto bits = static_cast<std::make_unsigned_t<Integer>>(value);
    BigEndianBytes<Integer> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(bits >> 8 * (bytes.size() - 1 - i) & 0xFF);
    }
    return bytes;
}

template <class Integer>
Integer fromBigEndian(const BigEndianBytes<Integer>& bytes)
{
    std::uint64_t bits = 0;
    for (const char byte : bytes) {
        bits = bits << 8 | static_cast<unsigned char>(byte);
    }
    return static_cast<Integer>(bits);
}

} // namespace Merrow
