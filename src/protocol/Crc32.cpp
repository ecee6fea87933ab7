#include "protocol/Crc32.h"

#include "platform/Compiler.h"

#include <array>

namespace Merrow {

namespace {

// Bytes taken in one round: one table lookup for each, all independent of each other.
constexpr std::size_t stride = 16;

using Tables = std::array<std::array<std::uint32_t, 256>, stride>;

// tables[k] takes a byte that k zero bytes follow.
consteval Tables makeTables()
{
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (auto& table : tables) {
            for (int bit = 0; bit < 8; ++bit) {
                value = crcOverZeroBit(value);
            }
            table[byte] = value;
        }
    }
    return tables;
}

constexpr Tables tables = makeTables();

} // namespace

std::uint32_t updateCrc(std::uint32_t crcRegister, const char* bytes, std::size_t count)
{
    if (count < 256) { // too short to gain from vectors
        return updateCrcByTables(crcRegister, bytes, count);
    }
    static CrcUpdate* const wide = updateCrcByVectors(32);
    static CrcUpdate* const narrow = updateCrcByVectors(16);
    CrcUpdate* const fastest = wide != nullptr ? wide : narrow != nullptr ? narrow : updateCrcByTables;
    return fastest(crcRegister, bytes, count);
}

std::uint32_t updateCrcByTables(std::uint32_t crcRegister, const char* bytes, std::size_t count)
{
    const auto* next = reinterpret_cast<const unsigned char*>(bytes);
    for (; count >= stride; count -= stride, next += stride) {
        std::uint32_t sum = 0;
        // Unrolled, the lookups of a round run side by side; as a loop they take twice the time.
        TARN_UNROLL
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
