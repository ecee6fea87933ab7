#include "protocol/Crc32.h"

#include <array>

namespace Merrow {

namespace {

// Bytes taken in one round: one table lookup for each, all independent of each other.
constexpr std::size_t stride = 16;

using Tables = std::array<std::array<std::uint32_t, 256>, stride>;

// tables[0] takes one byte into the register; tables[k] takes a byte that k zero bytes follow.
consteval Tables makeTables()
{
    constexpr std::uint32_t polynomial = 0xEDB88320;
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit) {
            value = value & 1 ? value >> 1 ^ polynomial : value >> 1;
        }
        tables[0][byte] = value;
    }
    for (std::size_t k = 1; k < stride; ++k) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t previous = tables[k - 1][byte];
            tables[k][byte] = previous >> 8 ^ tables[0][previous & 0xFF];
        }
    }
    return tables;
}

constexpr Tables tables = makeTables();

} // namespace

std::uint32_t updateCrc(std::uint32_t crcRegister, const char* bytes, std::size_t count)
{
    const auto* next = reinterpret_cast<const unsigned char*>(bytes);
    for (; count >= stride; count -= stride, next += stride) {
        std::uint32_t sum = 0;
        // Unrolled, the lookups of a round run side by side; as a loop they take twice the time.
#pragma GCC unroll 16
        for (std::size_t i = 0; i < stride; ++i) {
            const std::uint32_t mixed = i < 4 ? crcRegister >> 8 * i & 0xFF : 0;
            sum ^= tables[stride - 1 - i][next[i] ^ mixed];
        }
        crcRegister = sum;
    }
    for (; count > 0; --count, ++next) {
        crcRegister = tables[0][(crcRegister ^ *next) & 0xFF] ^ crcRegister >> 8;
    }
    return crcRegister;
}

} // namespace Merrow
