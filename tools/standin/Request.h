#pragma once

#include "Wire.h"

#include <cstdint>
#include <string>
#include <vector>

namespace standin {

// A whole, well-formed request. A parameter that did not come reads as empty, zero or false.
class Request
{
public:
    explicit Request(Message message) : message_(std::move(message)) {}

    const Message& message() const { return message_; }
    Tag code() const { return message_.code; }
    bool has(Tag tag) const { return find(tag) != nullptr; }

    const std::string& text(Tag tag) const;
    std::vector<std::string> texts(Tag tag) const;
    bool flag(Tag tag) const { return numberOf<std::uint8_t>(tag) != 0; }
    std::int32_t number(Tag tag) const { return numberOf<std::int32_t>(tag); }
    std::int64_t longNumber(Tag tag) const { return numberOf<std::int64_t>(tag); }
    StringMap map(Tag tag) const { return decodeMap(text(tag)); }

private:
    const std::string* find(Tag tag) const;
    template <class Number>
    Number numberOf(Tag tag) const
    {
        const auto* value = find(tag);
        return value == nullptr ? Number() : readNumber<Number>(*value);
    }

    Message message_;
};

} // namespace standin
