#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// The wire format that requests and replies share: numbers are big-endian, and a value is a tag, a length and its
// bytes.
namespace standin {

using Tag = std::uint16_t;
using StringMap = std::map<std::string, std::string>;

constexpr Tag tag(const char (&letters)[3])
{
    return static_cast<Tag>(static_cast<unsigned char>(letters[0]) << 8 | static_cast<unsigned char>(letters[1]));
}

inline constexpr std::uint16_t protocolVersion = 7;
inline constexpr Tag endMarker = 0xCEDE;

// Secret and Recipient are texts: one is shown to nobody, the other may come several times in a request.
enum class Kind { Text, Secret, Recipient, Bool, Short, Int, Long, Double, Map, Array, Items };

struct Parameter
{
    Tag tag;
    Kind kind;
    std::string value; // as on the wire, without tag and length
};

struct Message
{
    Tag code = 0;
    std::vector<Parameter> parameters;
};

// Bytes that break the format, and where they are.
class WireError : public std::runtime_error
{
public:
    WireError(std::size_t at, const std::string& what) : std::runtime_error(what), offset(at) {}
    const std::size_t offset;
};

template <class Number>
void appendNumber(std::string& out, Number number)
{
    const auto bits = static_cast<std::make_unsigned_t<Number>>(number);
    for (std::size_t shift = sizeof(Number) * 8; shift > 0; shift -= 8) {
        out.push_back(static_cast<char>(static_cast<std::uint64_t>(bits) >> (shift - 8) & 0xFF));
    }
}

template <class Number>
std::string encodeNumber(Number number)
{
    std::string bytes;
    appendNumber(bytes, number);
    return bytes;
}

// Reads from the first bytes of text, which must hold enough of them.
template <class Number>
Number readNumber(std::string_view text)
{
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        bits = bits << 8 | static_cast<unsigned char>(text[i]);
    }
    return static_cast<Number>(bits);
}

void appendSized(std::string& out, std::string_view bytes);
void appendParameter(std::string& out, Tag tag, std::string_view value);

std::string encodeMap(const StringMap& map);
// Demands exact lengths and strictly ascending keys; throws WireError with an offset into value.
StringMap decodeMap(std::string_view value);
std::string encodeArray(const std::vector<std::string>& items);
// What an array of a reply holds, as views into value.
std::vector<std::string_view> decodeArray(std::string_view value);

std::string encodeFrame(const Message& message);

std::string lettersOf(Tag tag);
// The two letters in quotes, or the number in hexadecimal where they are not printable.
std::string tagName(Tag tag);

} // namespace standin
