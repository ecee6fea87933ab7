// What breaks when the CRC is computed: every way to do it against the definition, bit by bit.
#include "protocol/Crc32.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

struct Way
{
    const char* name;
    Merrow::CrcUpdate* update;
};

// Those that this processor supports.
std::vector<Way> ways()
{
    std::vector<Way> all{{"chosen", Merrow::updateCrc},
                         {"tables", Merrow::updateCrcByTables},
                         {"vectors of 16", Merrow::updateCrcByVectors(16)},
                         {"vectors of 32", Merrow::updateCrcByVectors(32)}};
    std::erase_if(all, [](const Way& way) { return way.update == nullptr; });
    return all;
}

std::string randomBytes(std::size_t count)
{
    std::mt19937 random(1);
    std::string bytes(count, '\0');
    std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
    return bytes;
}

} // namespace

TEST(Crc, EveryWayOnEveryLengthAndAlignment)
{
    EXPECT_TRUE(Merrow::updateCrcByVectors(32) == nullptr || Merrow::updateCrcByVectors(16) != nullptr);
    constexpr std::size_t longest = 600;
    const std::string bytes = randomBytes(longest + 33);
    for (std::size_t start = 0; start < 33; ++start) {
        for (std::size_t length = 0; length <= longest; ++length) {
            const std::string_view piece = std::string_view(bytes).substr(start, length);
            const std::uint32_t expected = wire::crc(piece);
            for (const Way& way : ways()) {
                ASSERT_EQ(~way.update(Merrow::crcStart, piece.data(), length), expected)
                    << way.name << " " << start << "+" << length;
            }
        }
    }
}

TEST(Crc, LongRunsWholeAndInPieces)
{
    const std::string bytes = randomBytes(1'000'003);
    const std::uint32_t expected = wire::crc(bytes);
    const std::vector<Way> all = ways();
    for (const Way& way : all) {
        EXPECT_EQ(~way.update(Merrow::crcStart, bytes.data(), bytes.size()), expected) << way.name;
    }
    std::mt19937 random(2);
    for (int round = 0; round < 20; ++round) {
        std::uint32_t crcRegister = Merrow::crcStart;
        std::string_view rest = bytes;
        while (!rest.empty()) {
            const std::size_t longestPiece = std::size_t{1} << random() % 17;
            const std::string_view piece = rest.substr(0, random() % longestPiece + 1);
            crcRegister = all[random() % all.size()].update(crcRegister, piece.data(), piece.size());
            rest.remove_prefix(piece.size());
        }
        EXPECT_EQ(~crcRegister, expected) << "round " << round << ": a way left the register wrong for the next one";
    }
}
