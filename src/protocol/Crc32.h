#pragma once

#include <cstddef>
#include <cstdint>

namespace Merrow {

inline constexpr std::uint32_t crcStart = 0xFFFFFFFF;

// Takes `count` bytes into the register of the reflected CRC-32 of IEEE 802.3. The value that goes out on the wire is
// the register's ones' complement.
std::uint32_t updateCrc(std::uint32_t crcRegister, const char* bytes, std::size_t count);

} // namespace Merrow
