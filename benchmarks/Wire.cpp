#include "Wire.h"

#include <zlib.h>

namespace Bench {

namespace {

constexpr std::int64_t endMarker = 0xCEDE;

std::string bigEndian(std::int64_t value, std::size_t width)
{
    std::string bytes;
    for (std::size_t i = width; i-- > 0;) {
        bytes.push_back(static_cast<char>(value >> 8 * i));
    }
    return bytes;
}

std::int64_t numberAt(const char* bytes, std::size_t width)
{
    std::int64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

} // namespace

Message::Message(Letters code)
{
    put(7, 2);
    putLetters(code);
}

Message& Message::number(Letters tag, std::int64_t value, std::size_t width)
{
    return nested(tag, [&](Message& message) { message.put(value, width); });
}

Message& Message::text(Letters tag, std::string_view value)
{
    return nested(tag, [&](Message& message) { message.put(value); });
}

Message& Message::entry(std::string_view key, std::string_view value)
{
    return lengthAndText(key).lengthAndText(value);
}

Message& Message::lengthAndText(std::string_view value)
{
    return item([&](Message& message) { message.put(value); });
}

Message& Message::end()
{
    put(endMarker, 2);
    put(static_cast<std::int64_t>(crc32_z(0, reinterpret_cast<const Bytef*>(bytes_.data()), bytes_.size())), 4);
    return *this;
}

void Message::put(std::int64_t value, std::size_t width)
{
    put(bigEndian(value, width));
}

void Message::put(std::string_view value)
{
    bytes_.append(value);
    if (!value.empty()) {
        primitives_.push_back(value.size());
    }
}

void Message::putLetters(Letters letters)
{
    put(std::string_view(letters, 2));
}

void Message::setLength(std::size_t start)
{
    bytes_.replace(start - 4, 4, bigEndian(static_cast<std::int64_t>(bytes_.size() - start), 4));
}

bool MessageEnd::reached(const char* bytes, std::size_t count)
{
    // Six bytes are a tag and a length, and the marker and the CRC as well.
    while (position_ + 6 <= count) {
        primitives_.insert(primitives_.end(), {2, 4});
        if (numberAt(bytes + position_, 2) == endMarker) {
            return true;
        }
        const auto length = static_cast<std::size_t>(numberAt(bytes + position_ + 2, 4));
        position_ += 6 + length;
        if (length > 0) {
            primitives_.push_back(length);
        }
    }
    return false;
}

} // namespace Bench
