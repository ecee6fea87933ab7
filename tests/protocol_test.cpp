// What breaks when requests are encoded or replies decoded.
#include "client/RequestParameters.h"
#include "protocol/CommandException.h"
#include "remote/RemoteStatus.h"
#include "support/MemoryStreams.h"
#include "support/Wire.h"
#include "text/Conversion.h"

#include <gtest/gtest.h>

using Merrow::tag;
using namespace std::string_literals;
using Sends = std::vector<std::string>;

namespace {

// The text of the exception that `action` throws. Frees it, as nobody else does.
template <class Action>
std::string failureOf(Action action)
{
    try {
        action();
    } catch (Merrow::CommandException* exception) {
        const std::string text = exception->what();
        delete exception;
        return text;
    }
    return "no failure";
}

} // namespace

TEST(Encoding, EachPrimitiveIsOneSendMostSignificantByteFirst)
{
    MemoryOutput out;
    out.beginCommand(Merrow::code("SD"));
    out.writeIntParam(tag("ii"), -1);
    out.writeLongParam(tag("ll"), 0x0102030405060708);
    out.writeShortParam(tag("ss"), -2);
    out.writeDateParam(tag("dd"), 0x01020304);
    out.writeBoolParam(tag("bb"), true);
    out.writeBytesParam(tag("tt"), "abc", 3);
    out.endCommand();
    std::string sends;
    for (std::size_t i = 0; i + 1 < out.sends.size(); ++i) {
        sends += out.sends[i] + "|";
    }
    EXPECT_EQ(sends, "\0\7|SD|ii|\0\0\0\4|\xFF\xFF\xFF\xFF|ll|\0\0\0\10|\1\2\3\4\5\6\7\10|"
                     "ss|\0\0\0\2|\xFF\xFE|dd|\0\0\0\4|\1\2\3\4|bb|\0\0\0\1|\1|tt|\0\0\0\3|abc|\xCE\xDE|"s);
    EXPECT_EQ(out.sends.back(), wire::int32(wire::crc(out.bytes().substr(0, out.bytes().size() - 4))));
}

TEST(Encoding, NullAndEmptyValuesAndMapsInKeyOrder)
{
    MemoryOutput out;
    out.writeBytesParam(tag("nn"), nullptr, 5);
    out.writeBytesParam(tag("ee"), "", 0);
    out.writeStringMapParam(tag("mm"), {});
    out.writeStringMapParam(tag("mm"), {{"b", "2"}, {"a\0"s, "\xFF"}, {"\x80", ""}});
    const std::string map = wire::sequence({"a\0"s, "\xFF", "b", "2", "\x80", ""});
    EXPECT_EQ(out.sends, (Sends{"nn", "\0\0\0\0"s, "ee", "\0\0\0\0"s, "mm", "\0\0\0\0"s, "mm",
                                wire::int32(static_cast<std::int64_t>(map.size())), map}));
}

TEST(Encoding, PartialZeroAndFailedSends)
{
    MemoryOutput out;
    out.answers = {2, 2, 0, 0, 1, 1}; // version, code in pieces with waits between
    out.beginCommand(Merrow::code("ST"));
    out.endCommand();
    out.beginCommand(Merrow::code("SD"));
    out.endCommand();
    EXPECT_EQ(out.bytes(), wire::message("ST") + wire::message("SD")) << "the CRC covers each byte once";

    MemoryOutput failing;
    failing.answers = {2, -1};
    failing.writeBytes("abcdef", 6);
    EXPECT_EQ(failing.sends, Sends{"ab"}) << "sending stops, nothing is raised";
}

TEST(Encoding, TextsOfMoreThanTwoGigabytesAreRefusedUnread)
{
    MemoryOutput out;
    out.answers = {2, 4, -1};
    const char* nothing = "";
    Client::sendText(out, tag("tt"), std::string_view(nothing, INT32_MAX));
    EXPECT_EQ(out.sends, (Sends{"tt", "\x7F\xFF\xFF\xFF"}));
    const std::size_t tooMany = std::size_t{INT32_MAX} + 1;
    EXPECT_THROW(Client::sendText(out, tag("tt"), std::string_view(nothing, tooMany)), std::length_error);
    const WideChar end = 0;
    EXPECT_THROW(Text::wideToUtf8(WideView(&end, tooMany)), std::length_error);
}

TEST(Decoding, ValuesArriveByteByByte)
{
    const std::string bytes = wire::shortInt(0xCEDE) + wire::int32(-5) + wire::int64(INT64_MIN) +
                              wire::float64(-0.15625) + "\2\0"s + "text" + wire::sequence({"", "b"}) +
                              wire::sequence({"k", "1", "a\0b"s, "x", "k", "2"});
    MemoryInput in(bytes, 1);
    in.waits = 2; // a receive of nothing is repeated
    EXPECT_EQ(in.readShort(), 0xCEDE);
    EXPECT_EQ(in.readInt(), -5);
    EXPECT_EQ(in.readLong(), INT64_MIN);
    EXPECT_EQ(in.readDouble(), -0.15625);
    EXPECT_TRUE(in.readBool());
    EXPECT_FALSE(in.readBool());
    EXPECT_EQ(in.readString(0), "");
    EXPECT_EQ(in.readString(4), "text");
    EXPECT_EQ(in.readStringArray(9), (std::vector<std::string>{"", "b"}));
    EXPECT_EQ(in.readStringMap(32), (StringMap{{"a\0b"s, "x"}, {"k", "2"}}));
    EXPECT_TRUE(in.rest.empty());
}

TEST(Decoding, LongTextsArriveWholeOrUpToTheBreak)
{
    std::string text;
    for (int i = 0; text.size() < 500'000; ++i) {
        text += std::to_string(i) + ' ';
    }
    const auto length = static_cast<std::int32_t>(text.size());
    for (const std::int32_t chunk : {INT32_MAX, 131'072, 9'999}) {
        MemoryInput in(text, chunk);
        EXPECT_EQ(in.readString(length), text) << chunk;
        MemoryInput cut(std::string_view(text).substr(0, 300'000), chunk);
        EXPECT_EQ(cut.readString(length), text.substr(0, 300'000)) << chunk;
        EXPECT_TRUE(cut.broken());
    }
}

TEST(Decoding, ArraysMustEndExactlyMapsMayOverrun)
{
    const auto readArray = [](std::int32_t total) {
        MemoryInput in(std::string_view("\0\0\0\4abcd\0\0\0\0", 12));
        const std::string failure = failureOf([&] { in.readStringArray(total); });
        return failure + "|" + std::to_string(in.rest.size());
    };
    EXPECT_EQ(readArray(8), "no failure|4");
    EXPECT_EQ(readArray(7), "Length of string array mismatch|4");
    EXPECT_EQ(readArray(9), "Length of string array mismatch|0") << "a second element is read first";
    EXPECT_EQ(readArray(-1), "Length of string array mismatch|12");

    const std::string two = wire::sequence({"a", "1", "b", "2"});
    MemoryInput in(two);
    EXPECT_EQ(in.readStringMap(-3).size(), 0u);
    EXPECT_EQ(in.readStringMap(11).size(), 2u) << "one byte over the first entry reads a whole second one";
    MemoryInput exactly(two);
    EXPECT_EQ(exactly.readStringMap(10).size(), 1u);
    EXPECT_EQ(exactly.rest.size(), 10u);
}

TEST(Decoding, FrameFailuresNameWhatWasRead)
{
    const auto readFrame = [](std::string bytes) {
        MemoryInput in(bytes);
        const std::string failure = failureOf([&] {
            in.beginReply();
            in.readTag();
            in.endReply();
        });
        return failure + "|" + std::to_string(in.rest.size());
    };
    const std::string good = wire::message("SD");
    EXPECT_EQ(readFrame(good), "no failure|0");
    EXPECT_EQ(readFrame("\0\10"s + good.substr(2)), "Version mismatch 0x8 != 7|8") << "two bytes were consumed";
    EXPECT_EQ(readFrame("\1\7"s + good.substr(2)), "Version mismatch 0x107 != 7|8");
    std::string bad = good;
    bad.back() = static_cast<char>(bad.back() ^ 1);
    char expected[64];
    std::snprintf(expected, sizeof expected, "CRC mismatch: Got 0x%x, expected 0x%x|0",
                  wire::crc(good.substr(0, 6)) ^ 1, wire::crc(good.substr(0, 6)));
    EXPECT_EQ(readFrame(bad), expected);

    // What is missing reads as ones: that must not complete a CRC that ends in them.
    std::string endsInOnes;
    for (int i = 0; !endsInOnes.ends_with('\xFF'); ++i) {
        endsInOnes = wire::message("SD", {{"em", std::to_string(i)}});
    }
    MemoryInput cut(std::string_view(endsInOnes).substr(0, endsInOnes.size() - 1));
    const std::string failure = failureOf([&] { const Merrow::RemoteStopStatus reply(cut); });
    EXPECT_TRUE(failure.starts_with("CRC mismatch: ")) << failure;

    const std::string twoReplies = good + good;
    MemoryInput second(twoReplies);
    for (int twice = 0; twice < 2; ++twice) {
        second.beginReply();
        second.readTag();
        EXPECT_EQ(failureOf([&] { second.endReply(); }), "no failure") << "each reply's CRC starts afresh";
    }
}

TEST(Decoding, NegativeLengthsAndBrokenConnectionsEndTheRead)
{
    MemoryInput negative("abc");
    EXPECT_EQ(failureOf([&] { negative.readString(-1); }), "Insufficient memory available");
    EXPECT_EQ(negative.rest, "abc");

    MemoryInput broken("\1\2\3");
    char buffer[8] = {};
    EXPECT_EQ(broken.readFully(buffer, 8), 3);
    EXPECT_EQ(broken.readFully(buffer, 8), 0) << "nothing more is asked of a broken connection";
    EXPECT_EQ(broken.readShort(), 0xFFFF);
    EXPECT_EQ(failureOf([&] { broken.readStringMap(INT32_MAX); }), "Insufficient memory available")
        << "no count of entries that never came is walked through";
    EXPECT_EQ(broken.readString(100'000'000), "") << "a text that never came costs no copy of its length";
}
