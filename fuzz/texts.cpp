// The text functions. The first byte of an input picks the function, the rest is its text.
#include "Target.h"
#include "platform/Platform.h"
#include "text/Conversion.h"
#include "text/Decimal.h"
#include "text/Lists.h"

#include <algorithm>
#include <array>
#include <memory>

namespace {

constexpr WideChar replacement = 0xFFFD;

// Converts twice, to count and to write, and holds the two and the bound against each other. Each buffer has its exact
// size, so that a sanitizer sees a write past its end.
template <class To, class From, class Convert>
std::basic_string<To> converted(std::basic_string_view<From> text, Convert convert)
{
    const auto count = static_cast<std::int32_t>(text.size());
    const std::int32_t needed = convert(text.data(), count, static_cast<To*>(nullptr), 0);
    demand((needed == 0) == text.empty(), "only an empty text converts into nothing");
    const auto size = static_cast<std::size_t>(needed);
    const auto out = std::make_unique<To[]>(size);
    if (needed > 1) {
        const auto shorter = std::make_unique<To[]>(size - 1);
        demand(convert(text.data(), count, shorter.get(), needed - 1) == 0, "a buffer that is too small is refused");
    }
    if (needed > 0) {
        demand(convert(text.data(), count, out.get(), needed) == needed, "counting and writing agree");
    }
    return {out.get(), size};
}

WideText toWide(std::string_view text)
{
    return converted<WideChar>(text, Platform::utf8ToWide);
}

std::string toUtf8(WideView text)
{
    const std::string result = converted<char>(text, Platform::wideToUtf8);
    demand(Text::wideToUtf8(text) == result, "the two layers agree");
    return result;
}

void checkUtf8(std::string_view text)
{
    const WideText wide = toWide(text);
    const std::string back = toUtf8(wide);
    demand(toWide(back) == wide, "what was converted is well-formed");
    demand(back == text || wide.find(replacement) != WideText::npos, "well-formed text comes back as it was");
}

void checkWide(std::string_view bytes)
{
    WideText text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text +=
            static_cast<WideChar>(static_cast<unsigned char>(bytes[i]) << 8 | static_cast<unsigned char>(bytes[i + 1]));
    }
    const WideText back = toWide(toUtf8(text));
    const auto sameOrReplaced = [](WideChar was, WideChar is) {
        return was == is || (is == replacement && was >= 0xD800 && was <= 0xDFFF);
    };
    demand(std::ranges::equal(text, back, sameOrReplaced), "only unpaired surrogates are replaced, unit by unit");
}

// The functions on zero-terminated texts, into buffers of the exact size.
void checkTerminated(std::string_view bytes)
{
    const std::string text(bytes.substr(0, bytes.find('\0')));
    const WideText expected = toWide(text);
    const auto size = expected.size() + 1;
    const auto out = std::make_unique<WideChar[]>(size);
    Text::utf8IntoWide(text.c_str(), out.get());
    demand(WideView(out.get(), size) == WideView(expected.c_str(), size), "text and terminator are written");
    WideChar* task = Text::utf8ToTaskMemWide(text.c_str());
    demand(task != nullptr && WideView(task) == expected, "so they are in task memory");
    Platform::releaseTaskMemory(task);
    demand(Text::wideToUtf8(out.get()) == toUtf8(expected), "the way back is the same");
    const auto copy = std::make_unique<char[]>(text.size() + 1);
    Text::copyOut(text, copy.get());
    demand(copy.get() == text, "a copy is the text");
}

// Delimiter and text. The first byte of the input says how much of it is the delimiter.
std::pair<std::string_view, std::string_view> divided(std::string_view input)
{
    const std::size_t size = std::min<std::size_t>(1 + (input[0] & 7), input.size() - 1);
    return {input.substr(1, size), input.substr(1 + size)};
}

void checkSplitAny(std::string_view input)
{
    const auto [delimiters, text] = divided(input);
    const std::vector<std::string> pieces = Text::splitAny(text, delimiters);
    std::size_t at = 0;
    for (const std::string& piece : pieces) {
        demand(piece.find_first_of(delimiters) == std::string::npos, "no piece holds a delimiter");
        demand(text.substr(at, piece.size()) == piece, "pieces are in their places");
        at += piece.size();
        demand(at == text.size() || delimiters.find(text[at]) != std::string_view::npos, "a delimiter ends a piece");
        ++at;
    }
    demand(at == text.size() + 1, "nothing is left out");
}

void checkSplitAtText(std::string_view input)
{
    const auto [delimiter, text] = divided(input);
    if (delimiter.empty()) {
        return;
    }
    const std::vector<std::string> pieces = Text::splitAtText(text, delimiter);
    if (text.find(delimiter) == std::string_view::npos) {
        demand(pieces.empty(), "a text without the delimiter has no pieces");
        return;
    }
    Text::JoinedList joined(delimiter);
    for (const std::string& piece : pieces) {
        demand(piece.find(delimiter) == std::string::npos, "no piece holds the delimiter");
        joined.append(piece);
    }
    demand(joined.text() == text || joined.text() + std::string(delimiter) == text, "joined again, it is the text");
}

void checkDecimal(std::string_view bytes)
{
    const std::string text(bytes);
    const auto wide = Text::decimal<std::int64_t>(text);
    const auto narrow = Text::decimal<std::int32_t>(text);
    demand(narrow == std::clamp<std::int64_t>(wide, INT32_MIN, INT32_MAX), "out of range saturates");
    demand(Text::decimal<std::int64_t>(std::to_string(wide)) == wide, "a number's own text is that number");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    constexpr std::array checks = {checkUtf8,    checkWide,     checkTerminated,
                                   checkDecimal, checkSplitAny, checkSplitAtText};
    if (size >= 2) {
        checks[bytes[0] % checks.size()](viewOf(bytes + 1, size - 1));
    }
    return 0;
}

std::vector<std::string> seedInputs()
{
    using namespace std::string_literals;
    const std::string utf8 = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x94\x92\xED\xA0\x80\xC0\x80\xF4\x90\x80\x80\xE2\x82"s;
    const std::string utf16 = "\0a\0\xE4\x20\xAC\xD8\x3D\xDD\x12\xD8\x00\0b\xDC\x00"s;
    return {'\0' + utf8,      '\1' + utf16,    '\2' + utf8,      "\3 -12", "\3+9223372036854775808",
            "\3-2147483649x", "\4\1;,a;b,,c;", "\5\1; a; b; ; c"};
}
