#include "protocol/Crc32.h"

#include <benchmark/benchmark.h>

#include <array>
#include <string>
#include <zlib.h>

// The kernels of the CRC, in bytes per second.
namespace {

using Kernel = Merrow::CrcUpdate*;

// The definition: one byte, one lookup.
std::uint32_t byteStep(std::uint32_t crc, const char* bytes, std::size_t count)
{
    static const auto table = [] {
        std::array<std::uint32_t, 256> made{};
        for (std::uint32_t i = 0; i < made.size(); ++i) {
            made[i] = i;
            for (int bit = 0; bit < 8; ++bit) {
                made[i] = (made[i] & 1) != 0 ? made[i] >> 1 ^ 0xEDB88320 : made[i] >> 1;
            }
        }
        return made;
    }();
    for (std::size_t i = 0; i < count; ++i) {
        crc = table[(crc ^ static_cast<unsigned char>(bytes[i])) & 0xFF] ^ crc >> 8;
    }
    return crc;
}

std::uint32_t zlibs(std::uint32_t crc, const char* bytes, std::size_t count)
{
    return ~static_cast<std::uint32_t>(crc32_z(~crc, reinterpret_cast<const Bytef*>(bytes), count));
}

void crc(benchmark::State& state, Kernel kernel)
{
    const std::string bytes(static_cast<std::size_t>(state.range(0)), 'x');
    if (kernel(Merrow::crcStart, bytes.data(), bytes.size()) != zlibs(Merrow::crcStart, bytes.data(), bytes.size())) {
        state.SkipWithError("another CRC than zlib's");
        return;
    }
    std::uint32_t value = Merrow::crcStart;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value = kernel(value, bytes.data(), bytes.size()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    for (const std::int64_t size : {16, 64, 256, 4096, 65'536, 1'000'000, 10'000'000}) {
        benchmark->Arg(size);
    }
}

[[maybe_unused]] const bool registered = [] {
    for (const std::size_t size : {16u, 32u}) {
        if (const Kernel kernel = Merrow::updateCrcByVectors(size); kernel != nullptr) {
            benchmark::RegisterBenchmark(("crc/vectors" + std::to_string(size)).c_str(), crc, kernel)->Apply(sizes);
        }
    }
    return true;
}();

BENCHMARK_CAPTURE(crc, library, Merrow::updateCrc)->Apply(sizes);
BENCHMARK_CAPTURE(crc, tables, Merrow::updateCrcByTables)->Apply(sizes);
BENCHMARK_CAPTURE(crc, byte, byteStep)->Apply(sizes);
BENCHMARK_CAPTURE(crc, zlib, zlibs)->Apply(sizes);

} // namespace
