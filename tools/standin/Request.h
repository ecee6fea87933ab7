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
    bool flag(Tag tag) const;
    std::int32_t number(Tag tag) const;
    std::int64_t longNumber(Tag tag) const;
    StringMap map(Tag tag) const;

private:
    const std::string* find(Tag tag) const;

    Message message_;
};

} // namespace standin
