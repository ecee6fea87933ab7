#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The wire format once more, with zlib's CRC: the benchmarks share no code with what they measure.
namespace Bench {

using Letters = const char (&)[3];
using Sizes = std::vector<std::size_t>;

// A message being built. Remembers the sizes of the primitive values that it is made of: a reader that takes each by
// itself receives just those.
class Message
{
public:
    explicit Message(Letters code);

    Message& number(Letters tag, std::int64_t value, std::size_t width);
    Message& text(Letters tag, std::string_view value);
    Message& entry(std::string_view key, std::string_view value);
    Message& lengthAndText(std::string_view value);

    // A parameter, or an item of one, whose contents `fill` writes.
    template <class Fill>
    Message& nested(Letters tag, Fill fill)
    {
        putLetters(tag);
        return item(fill);
    }
    template <class Fill>
    Message& item(Fill fill)
    {
        put(0, 4);
        const std::size_t start = bytes_.size();
        fill(*this);
        setLength(start);
        return *this;
    }

    // Ends the message.
    Message& end();

    const std::string& bytes() const { return bytes_; }
    const Sizes& primitives() const { return primitives_; }

private:
    void put(std::int64_t value, std::size_t width);
    void put(std::string_view value);
    void putLetters(Letters letters);
    void setLength(std::size_t start);

    std::string bytes_;
    Sizes primitives_;
};

// Finds the end of a message whose bytes arrive little by little.
class MessageEnd
{
public:
    // Looks at all bytes received so far. Returns whether the message is complete.
    bool reached(const char* bytes, std::size_t count);

    // The primitive values passed on the way, as far as they are not empty.
    const Sizes& primitives() const { return primitives_; }

private:
    std::size_t position_ = 4; // behind version and code
    Sizes primitives_{2, 2};
};

} // namespace Bench
