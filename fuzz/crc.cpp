// The CRC. The first byte of an input says where the rest is split in two.
#include "Target.h"
#include "Wire.h"
#include "protocol/Crc32.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string_view text = viewOf(bytes + 1, size - 1);
    const std::string_view front = text.substr(0, bytes[0] * text.size() / 255);
    const std::string_view back = text.substr(front.size());
    const std::uint32_t expected = wire::crc(text);
    const auto over = [](Merrow::CrcUpdate* update, std::uint32_t crcRegister, std::string_view piece) {
        return update(crcRegister, piece.data(), piece.size());
    };
    for (Merrow::CrcUpdate* update : {Merrow::updateCrc, Merrow::updateCrcByTables, Merrow::updateCrcByVectors(16),
                                      Merrow::updateCrcByVectors(32)}) {
        if (update != nullptr) {
            demand(~over(update, Merrow::crcStart, text) == expected, "each way gives the CRC by definition");
            const std::uint32_t half = over(Merrow::updateCrcByTables, Merrow::crcStart, front);
            demand(~over(update, half, back) == expected, "each way goes on where another has ended");
        }
    }
    return 0;
}

std::vector<std::string> seedInputs()
{
    const std::string text = "The CRC of this line depends on each of its bytes and on where they are. ";
    std::string lines;
    for (int i = 0; i < 9; ++i) {
        lines += text;
    }
    return {'\0' + text, '\x40' + lines, '\x7F' + std::string(257, '\0'), "\x20"};
}
