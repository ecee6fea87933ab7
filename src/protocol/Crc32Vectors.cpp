#include "protocol/Crc32.h"

#include "platform/Compiler.h"

#include <cstring>
#if defined(TARN_X86)
#include <immintrin.h>
#endif
#if defined(_MSC_VER)
#include <intrin.h>
#endif

// The bytes are the coefficients of a polynomial over GF(2), and their CRC is its remainder. A vector of two 64-bit
// halves A and B that n further bits follow adds A * x^(n+64) + B * x^n to it. Each power of x may be replaced by its
// own remainder, a factor of 32 bits: then both products fit a vector, and can be added to the one that lies n bits
// further on. What is left is shorter and has the same remainder.
//
// Four vectors move on at a time: the processor can start the next multiplication long before the result of one is there.
// The last four are short enough for the tables.
namespace Merrow {

#if defined(TARN_X86)

namespace {

constexpr std::size_t vectorCount = 4;

// The factor in place of x^exponent. It fills the upper half of its 64 bits, since x^0 is the topmost bit everywhere;
// that order also makes a product come out multiplied by one more x, so that the factor has one less.
consteval std::int64_t factor(std::size_t exponent)
{
    std::uint32_t remainder = 0x80000000;
    for (std::size_t i = 1; i < exponent; ++i) {
        remainder = crcOverZeroBit(remainder); // times x
    }
    return std::int64_t{remainder} << 32;
}

// Moves the vectors in `state` on by `steps` times their joint length. A 32-bit host need not have aligned the stack.
TARN_VECTOR_FUNCTION("pclmul") void fold16(std::uint64_t* state, const char* bytes, std::size_t steps)
{
    __m128i vectors[vectorCount];
    const __m128i factors = _mm_set_epi64x(factor(8 * sizeof vectors), factor(8 * sizeof vectors + 64));
    const auto* next = reinterpret_cast<const __m128i*>(bytes);
    std::memcpy(vectors, state, sizeof vectors);
    for (; steps > 0; --steps) {
        TARN_UNROLL
        for (__m128i& vector : vectors) {
            const __m128i moved =
                _mm_xor_si128(_mm_clmulepi64_si128(vector, factors, 0x00), _mm_clmulepi64_si128(vector, factors, 0x11));
            vector = _mm_xor_si128(moved, _mm_loadu_si128(next++));
        }
    }
    std::memcpy(state, vectors, sizeof vectors);
}

// GCC for Windows does not align the stack for vectors of this size.
#ifndef _WIN32
TARN_VECTOR_FUNCTION("avx2,vpclmulqdq") void fold32(std::uint64_t* state, const char* bytes, std::size_t steps)
{
    __m256i vectors[vectorCount];
    const __m256i factors =
        _mm256_broadcastsi128_si256(_mm_set_epi64x(factor(8 * sizeof vectors), factor(8 * sizeof vectors + 64)));
    const auto* next = reinterpret_cast<const __m256i*>(bytes);
    std::memcpy(vectors, state, sizeof vectors);
    for (; steps > 0; --steps) {
        TARN_UNROLL
        for (__m256i& vector : vectors) {
            const __m256i moved = _mm256_xor_si256(_mm256_clmulepi64_epi128(vector, factors, 0x00),
                                                   _mm256_clmulepi64_epi128(vector, factors, 0x11));
            vector = _mm256_xor_si256(moved, _mm256_loadu_si256(next++));
        }
    }
    std::memcpy(state, vectors, sizeof vectors);
}
#endif

bool multipliesWithoutCarry()
{
#if defined(_MSC_VER)
    int registers[4]; // EAX, EBX, ECX, EDX
    __cpuid(registers, 1);
    return (registers[2] & 2) != 0;
#else
    return __builtin_cpu_supports("pclmul");
#endif
}

template <std::size_t vectorSize, void fold(std::uint64_t*, const char*, std::size_t)>
std::uint32_t update(std::uint32_t crcRegister, const char* bytes, std::size_t count)
{
    constexpr std::size_t step = vectorCount * vectorSize;
    if (count < step) {
        return updateCrcByTables(crcRegister, bytes, count);
    }
    std::uint64_t state[step / sizeof(std::uint64_t)];
    std::memcpy(state, bytes, step);
    state[0] ^= crcRegister;
    fold(state, bytes + step, count / step - 1);
    const std::uint32_t folded = updateCrcByTables(0, reinterpret_cast<const char*>(state), step);
    return updateCrcByTables(folded, bytes + count / step * step, count % step);
}

} // namespace

#endif

CrcUpdate* updateCrcByVectors([[maybe_unused]] std::size_t vectorSize)
{
#if defined(TARN_X86)
    if (vectorSize == 16 && multipliesWithoutCarry()) {
        return update<16, fold16>;
    }
#ifndef _WIN32
    if (vectorSize == 32 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("vpclmulqdq")) {
        return update<32, fold32>;
    }
#endif
#endif
    return nullptr;
}

} // namespace Merrow
