#pragma once

#include <cstddef>
#include <cstdint>

namespace Merrow {

inline constexpr std::uint32_t crcStart = 0xFFFFFFFF;

// Takes `count` bytes into the register of the reflected CRC-32 of IEEE 802.3. The value that goes out on the wire is
// the register's ones' complement.
using CrcUpdate = std::uint32_t(std::uint32_t crcRegister, const char* bytes, std::size_t count);

// The fastest of the ways below for the length and the processor.
CrcUpdate updateCrc;

// One bit, a zero.
constexpr std::uint32_t crcOverZeroBit(std::uint32_t crcRegister)
{
    return crcRegister >> 1 ^ (crcRegister & 1 ? 0xEDB88320 : 0);
}

// By table lookups.
CrcUpdate updateCrcByTables;

// By carry-less multiplication of vectors of 16 or 32 bytes. Null when the processor cannot do it.
CrcUpdate* updateCrcByVectors(std::size_t vectorSize);

} // namespace Merrow
