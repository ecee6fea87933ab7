// What breaks when texts are converted, split, joined or encoded.
#include "platform/Platform.h"
#include "text/Conversion.h"
#include "text/Decimal.h"
#include "text/EnvelopeConfig.h"
#include "text/Lists.h"

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace std::string_view_literals;
using Pieces = std::vector<std::string>;

namespace {

WideText units(std::u16string_view text)
{
    return WideText(text.begin(), text.end());
}

} // namespace

TEST(Conversion, WellFormedTextsBothWays)
{
    const std::string utf8 = "a\xC3\x84\xE2\x82\xAC\xF0\x9F\x94\x92z";
    const WideText utf16 = units(u"a\u00C4\u20AC\U0001F512z");
    EXPECT_EQ(Text::wideToUtf8(utf16), utf8);
    EXPECT_EQ(Text::wideToUtf8(WideView()), "");
    EXPECT_EQ(Text::wideToUtf8(static_cast<const WideChar*>(nullptr)), "");
    WideChar buffer[16];
    std::fill(std::begin(buffer), std::end(buffer), WideChar('~'));
    Text::utf8IntoWide(utf8.c_str(), buffer);
    EXPECT_EQ(WideText(buffer), utf16);
    EXPECT_EQ(buffer[utf16.size() + 1], WideChar('~')) << "nothing after the terminator";
    WideChar* empty = Text::utf8ToTaskMemWide("");
    EXPECT_EQ(empty[0], 0);
    Platform::releaseTaskMemory(empty);
}

TEST(Conversion, EveryCharacterBothWays)
{
    std::string utf8;
    WideText utf16;
    for (std::uint32_t value = 1; value <= 0x10FFFF; ++value) {
        const auto trail = [&](int shift) { return static_cast<char>(0x80 | (value >> shift & 0x3F)); };
        if (value < 0x80) {
            utf8 += static_cast<char>(value);
        } else if (value < 0x800) {
            utf8 += {static_cast<char>(0xC0 | value >> 6), trail(0)};
        } else if (value < 0xD800 || (value > 0xDFFF && value < 0x10000)) {
            utf8 += {static_cast<char>(0xE0 | value >> 12), trail(6), trail(0)};
        } else if (value > 0xFFFF) {
            utf8 += {static_cast<char>(0xF0 | value >> 18), trail(12), trail(6), trail(0)};
            utf16 += {static_cast<WideChar>(0xD7C0 + (value >> 10)), static_cast<WideChar>(0xDC00 | (value & 0x3FF))};
        }
        if (value < 0xD800 || (value > 0xDFFF && value < 0x10000)) {
            utf16 += static_cast<WideChar>(value);
        }
    }
    EXPECT_TRUE(Text::wideToUtf8(utf16) == utf8);
    WideText out(utf16.size() + 1, '~');
    Text::utf8IntoWide(utf8.c_str(), out.data());
    EXPECT_TRUE(out == utf16 + WideChar(0));
}

TEST(Conversion, IllFormedTextsAreReplacedNeverRefused)
{
    const auto widened = [](const std::string& text) {
        std::vector<WideChar> buffer(text.size() + 1);
        Text::utf8IntoWide(text.c_str(), buffer.data());
        return WideText(buffer.data());
    };
    // Every two first bytes: a character has its shortest form, is not a surrogate and not beyond U+10FFFF.
    for (unsigned first = 0x80; first <= 0xFF; ++first) {
        const unsigned length = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF8 ? 4 : 1;
        for (unsigned second = 1; second <= 0xFF; ++second) {
            std::string text{static_cast<char>(first), static_cast<char>(second), '\x80', '\x80'};
            text.resize(std::max(length, 2u));
            unsigned value = (first & 0x7Fu >> length) << 6 | (second & 0x3F);
            value <<= 6 * (text.size() - 2);
            const bool wellFormed = length > 1 && second >> 6 == 2 && value <= 0x10FFFF && value >> 11 != 0x1B &&
                                    value >= std::array{0u, 0x80u, 0x800u, 0x10000u}[length - 1];
            const WideText result = widened(text);
            ASSERT_EQ(result[0] != 0xFFFD, wellFormed) << first << ", " << second;
            ASSERT_TRUE(!wellFormed || result.size() == (length < 4 ? 1 : 2)) << first << ", " << second;
        }
    }
    // And the bytes after them.
    for (const std::string begin : {"\xE0\xA0", "\xED\x9F", "\xEF\x80", "\xF0\x90", "\xF0\x90\x80", "\xF4\x8F\xBF"}) {
        for (const char next : {'\x7F', '\x80', '\xBF', '\xC0'}) {
            const WideText result = widened(begin + next + "\x80");
            ASSERT_EQ(result[0] == 0xFFFD, next == '\x7F' || next == '\xC0') << begin.size();
        }
    }
    for (const char* bad : {"\x80", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
        const WideText result = widened("<"s + bad + ">");
        ASSERT_GE(result.size(), 3u);
        EXPECT_EQ(result, units(u"<") + WideText(result.size() - 2, 0xFFFD) + units(u">"));
#ifndef _WIN32 // which may take several bytes for one
        EXPECT_EQ(result.size(), 2 + std::string_view(bad).size()) << "one for each byte";
#endif
    }
    EXPECT_EQ(widened("\xE2\x82"), units(u"\uFFFD")) << "a text that ends in the middle of a character";
    constexpr WideChar edges[] = {0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000};
    for (const WideChar first : edges) {
        for (const WideChar second : edges) {
            const bool paired = first >= 0xD800 && first < 0xDC00 && second >= 0xDC00 && second < 0xE000;
            const std::string narrow = Text::wideToUtf8(WideText{first, second, 'z'});
            EXPECT_EQ(narrow.size(), paired ? 5u : 7u);
            const auto isReplaced = [&](WideChar unit, std::size_t at) {
                return (narrow.compare(at, 3, "\xEF\xBF\xBD") == 0) == (unit >= 0xD800 && unit < 0xE000);
            };
            EXPECT_TRUE(paired || (isReplaced(first, 0) && isReplaced(second, 3)));
        }
    }
}

TEST(Conversion, LongRunsOfAsciiAroundOtherCharacters)
{
    std::string controls;
    for (int i = 0; i < 20; ++i) {
        controls += "\xC2\x80";
    }
    const std::pair<std::string, WideText> others[] = {{"", units(u"")},
                                                       {"\xC3\x84", units(u"\u00C4")},
                                                       {"\xC2\x80", units(u"\u0080")},
                                                       {controls, WideText(20, 0x80)},
                                                       {"\xE2\x82\xAC", units(u"\u20AC")},
                                                       {"\xF0\x9F\x94\x92", units(u"\U0001F512")}};
    for (const auto& [narrow, wide] : others) {
        for (std::size_t before = 0; before < 70; ++before) {
            for (std::size_t after = 0; after < 40; ++after) {
                const std::string utf8 = std::string(before, '\x7F') + narrow + std::string(after, 'a');
                const WideText utf16 = WideText(before, 0x7F) + wide + WideText(after, 'a');
                ASSERT_EQ(Text::wideToUtf8(utf16), utf8) << before << ", " << after;
                WideText out(utf16.size() + 2, '~');
                Text::utf8IntoWide(utf8.c_str(), out.data());
                ASSERT_EQ(out, utf16 + units(u"\0~"sv)) << before << ", " << after;
            }
        }
    }
}

TEST(Conversion, NothingIsWrittenBeyondTheCapacity)
{
    const WideText text = WideText(40, 'a') + units(u"\u20AC") + WideText(40, 'b');
    const std::string utf8 = Text::wideToUtf8(text);
    for (std::int32_t capacity = 1; capacity < 81; ++capacity) {
        WideText wide(90, '~');
        EXPECT_EQ(Platform::utf8ToWide(utf8.data(), 83, wide.data(), capacity), 0);
        EXPECT_EQ(wide.find_first_not_of('~', static_cast<std::size_t>(capacity)), WideText::npos) << capacity;
        std::string narrow(90, '~');
        EXPECT_EQ(Platform::wideToUtf8(text.data(), 81, narrow.data(), capacity), 0);
        EXPECT_EQ(narrow.find_first_not_of('~', static_cast<std::size_t>(capacity)), std::string::npos) << capacity;
    }
}

TEST(Lists, TheTwoSplitsDiffer)
{
    EXPECT_EQ(Text::splitAny("a;;b;", ";"), (Pieces{"a", "", "b", ""}));
    EXPECT_EQ(Text::splitAny("", ";"), Pieces{""});
    EXPECT_EQ(Text::splitAny("a.b,c", ".,"), (Pieces{"a", "b", "c"}));
    EXPECT_EQ(Text::splitAny("a;b", ""), Pieces{"a;b"});
    EXPECT_EQ(Text::splitAtText("72&105", "&"), (Pieces{"72", "105"}));
    EXPECT_EQ(Text::splitAtText("72&105&", "&"), (Pieces{"72", "105"}));
    EXPECT_EQ(Text::splitAtText("&&1", "&"), (Pieces{"", "", "1"}));
    EXPECT_EQ(Text::splitAtText("72", "&"), Pieces{});
    Text::JoinedList list("{plugin_delimiter}");
    list.append("");
    EXPECT_EQ(list.text(), "");
    list.append("b");
    EXPECT_EQ(list.text(), "{plugin_delimiter}b") << "an empty first item counts";
}

TEST(Decimal, ReadsWhatItCanAndSaturates)
{
    EXPECT_EQ(Text::decimal<std::int32_t>(" \t-3"), -3);
    EXPECT_EQ(Text::decimal<std::int32_t>("+12abc"), 12);
    EXPECT_EQ(Text::decimal<std::int32_t>("abc"), 0);
    EXPECT_EQ(Text::decimal<std::int32_t>("99999999999"), INT32_MAX);
    EXPECT_EQ(Text::decimal<std::int64_t>("-99999999999999999999"), INT64_MIN);
    EXPECT_EQ(Text::decimal<std::int64_t>("1300000000000"), 1300000000000);
}

TEST(EnvelopeConfig, EncodesEveryByteAndDecodesWhatItEncoded)
{
    std::string text = "A&\xC3\xA9";
    EXPECT_EQ(Text::encodeCharCodes(text), "65&38&-61&-87&");
    EXPECT_EQ(text, "");

    const StringMap map{{"b", "2\xE9"}, {"a", "1"}};
    std::string plain = Text::formatConfigMap(map);
    EXPECT_EQ(plain, "a: 1; b: 2\xE9; ");
    const std::string encoded = Text::encodeCharCodes(plain);
    EXPECT_EQ(encoded, "97&58&32&49&59&32&98&58&32&50&-23&59&32&");
    EXPECT_EQ(Text::decodeConfigMap(encoded), map);
}

TEST(EnvelopeConfig, DecodingLeavesOutWhatIsNotAPair)
{
    const auto decode = [](std::string text) { return Text::decodeConfigMap(Text::encodeCharCodes(text)); };
    EXPECT_EQ(decode("k: v"), StringMap{}) << "a lone pair without its separator";
    EXPECT_EQ(decode("k: v; "), (StringMap{{"k", "v"}}));
    EXPECT_EQ(decode("k: v; none; a: b: c; e: ; k: w"), (StringMap{{"k", "w"}}));
    EXPECT_EQ(Text::decodeConfigMap("363&58&32&118&59&32&"), (StringMap{{"k", "v"}})) << "low 8 bits count";
    EXPECT_EQ(Text::decodeConfigMap("72"), StringMap{});
}

TEST(EnvelopeConfig, WideFormInKeyOrder)
{
    WideChar buffer[64];
    Text::formatConfigMapWide({{"b", "\xF0\x9F\x94\x92"}, {"a", "1\0hidden"s}}, buffer);
    EXPECT_EQ(WideText(buffer), units(u"a: 1; b: \U0001F512; "));
}
