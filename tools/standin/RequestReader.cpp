#include "RequestReader.h"

#include <algorithm>
#include <cstdio>
#include <zlib.h>

namespace standin {

namespace {

// Zero for the kinds of any length.
constexpr std::size_t fixedSize(Kind kind)
{
    return kind == Kind::Bool ? 1 : kind == Kind::Int ? 4 : kind == Kind::Long ? 8 : 0;
}

std::string hex(std::uint32_t number)
{
    std::array<char, 11> text{};
    std::snprintf(text.data(), text.size(), "0x%08x", number);
    return text.data();
}

} // namespace

std::optional<Message> RequestReader::next()
{
    offset_ = 0;
    crc_ = 0;
    if (!hasMore()) {
        return std::nullopt;
    }
    if (const auto version = takeNumber<std::uint16_t>(); version != protocolVersion) {
        throw WireError(0, "version " + std::to_string(version) + " instead of " + std::to_string(protocolVersion));
    }
    Message message;
    message.code = takeNumber<Tag>();
    const auto* command = findCommand(message.code);
    if (command == nullptr) {
        throw WireError(2, "unknown command " + tagName(message.code));
    }
    for (auto tag = takeNumber<Tag>(); tag != endMarker; tag = takeNumber<Tag>()) {
        const auto& rule = ruleOf(tag, *command, message);
        message.parameters.push_back({tag, rule.kind, takeValue(rule)});
    }
    const auto computed = crc_;
    if (const auto received = takeNumber<std::uint32_t>(); received != computed) {
        throw WireError(offset_ - 4, "CRC " + hex(received) + " instead of " + hex(computed));
    }
    return message;
}

bool RequestReader::hasMore()
{
    if (position_ == filled_) {
        position_ = 0;
        filled_ = source_.read(block_.data(), block_.size());
    }
    return position_ < filled_;
}

std::string RequestReader::take(std::size_t count)
{
    std::string bytes;
    while (bytes.size() < count) {
        if (!hasMore()) {
            throw WireError(offset_ + bytes.size(), "lost in the middle of a request");
        }
        const auto size = std::min(count - bytes.size(), filled_ - position_);
        bytes.append(block_.data() + position_, size);
        position_ += size;
    }
    crc_ = static_cast<std::uint32_t>(crc32_z(crc_, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
    offset_ += count;
    return bytes;
}

template <class Number>
Number RequestReader::takeNumber()
{
    return readNumber<Number>(take(sizeof(Number)));
}

const ParameterRule& RequestReader::ruleOf(Tag tag, const CommandRule& command, const Message& message) const
{
    const auto at = offset_ - sizeof tag;
    const auto* rule = command.find(tag);
    if (rule == nullptr) {
        throw WireError(at, "unknown parameter " + tagName(tag) + " in a " + tagName(message.code) + " request");
    }
    if (!rule->repeats() && std::ranges::find(message.parameters, tag, &Parameter::tag) != message.parameters.end()) {
        throw WireError(at, "parameter " + tagName(tag) + " given twice");
    }
    if (message.parameters.size() == limit::parameters) {
        throw WireError(at, "more than " + std::to_string(limit::parameters) + " parameters");
    }
    return *rule;
}

std::size_t RequestReader::takeLength(const ParameterRule& rule)
{
    const auto at = offset_;
    const auto length = takeNumber<std::int32_t>();
    const auto complaint = "length " + std::to_string(length) + " of " + tagName(rule.tag);
    if (length < 0) {
        throw WireError(at, "negative " + complaint);
    }
    const auto size = static_cast<std::size_t>(length);
    if (size > limit::request - std::min(offset_, limit::request)) {
        throw WireError(at,
                        complaint + " exceeds the limit of " + std::to_string(limit::request) + " bytes for a request");
    }
    const auto wanted = fixedSize(rule.kind);
    if (wanted != 0 && size != wanted) {
        throw WireError(at, complaint + " instead of " + std::to_string(wanted));
    }
    return size;
}

std::string RequestReader::takeValue(const ParameterRule& rule)
{
    const auto size = takeLength(rule);
    const auto at = offset_;
    auto value = take(size);
    if (rule.kind == Kind::Bool && readNumber<std::uint8_t>(value) > 1) {
        throw WireError(at, "value of " + tagName(rule.tag) + " is neither 0 nor 1");
    }
    if (rule.kind == Kind::Map) {
        try {
            decodeMap(value);
        } catch (const WireError& error) {
            throw WireError(at + error.offset, tagName(rule.tag) + ": " + error.what());
        }
    }
    return value;
}

} // namespace standin
