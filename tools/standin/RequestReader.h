#pragma once

#include "Commands.h"
#include "Wire.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace standin {

// Where a client's bytes come from.
class ByteSource
{
public:
    virtual ~ByteSource() = default;
    // Waits for bytes and returns how many there now are, from 1 to size; 0 at their end.
    virtual std::size_t read(char* into, std::size_t size) = 0;
};

// Reads requests one after the other. Memory is taken for bytes that have arrived alone, so a length that promises
// gigabytes costs nothing.
class RequestReader
{
public:
    explicit RequestReader(ByteSource& source) : source_(source) {}

    // The next whole request; nothing when the bytes end before one begins. Throws WireError, with an offset into the
    // request, at bytes that are none; the reader is of no use after that.
    std::optional<Message> next();

private:
    bool hasMore();
    std::string take(std::size_t count);
    template <class Number>
    Number takeNumber();
    const ParameterRule& ruleOf(Tag tag, const CommandRule& command, const Message& message) const;
    std::size_t takeLength(const ParameterRule& rule);
    std::string takeValue(const ParameterRule& rule);

    ByteSource& source_;
    std::array<char, 65536> block_{};
    std::size_t position_ = 0;
    std::size_t filled_ = 0;
    std::size_t offset_ = 0; // into the request
    std::uint32_t crc_ = 0;
};

} // namespace standin
