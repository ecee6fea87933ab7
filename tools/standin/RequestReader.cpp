#include "RequestReader.h"

#include <algorithm>
#include <cstdio>
#include <utility>
#include <zlib.h>

namespace standin {

namespace {

// A connection that sent one large request does not hold its memory for ever.
constexpr std::size_t keptCapacity = 1 << 20;

// Zero for the kinds of any length.
std::size_t fixedSize(Kind kind)
{
    switch (kind) {
    case Kind::Bool:
        return 1;
    case Kind::Int:
        return 4;
    case Kind::Long:
        return 8;
    default:
        return 0;
    }
}

} // namespace

std::optional<Message> RequestReader::next()
{
    while (advance()) {
        if (step_ != Step::AtVersion)
            continue;
        buffer_.erase(0, std::exchange(position_, 0));
        if (buffer_.capacity() > keptCapacity)
            buffer_.shrink_to_fit();
        crc_ = 0;
        return std::exchange(message_, {});
    }
    return std::nullopt;
}

// One step along the frame; false when it needs bytes that have not arrived.
bool RequestReader::advance()
{
    switch (step_) {
    case Step::AtVersion: {
        const auto bytes = take(2);
        if (!bytes)
            return false;
        const auto version = readNumber<std::uint16_t>(*bytes);
        if (version != protocolVersion)
            throw WireError(0, "version " + std::to_string(version) + " instead of " + std::to_string(protocolVersion));
        step_ = Step::AtCode;
        return true;
    }
    case Step::AtCode: {
        const auto bytes = take(2);
        if (!bytes)
            return false;
        message_.code = readNumber<Tag>(*bytes);
        command_ = findCommand(message_.code);
        if (!command_)
            throw WireError(2, "unknown command " + tagName(message_.code));
        step_ = Step::AtTag;
        return true;
    }
    case Step::AtTag: {
        const auto bytes = take(2);
        if (!bytes)
            return false;
        const auto tag = readNumber<Tag>(*bytes);
        if (tag == endMarker) {
            step_ = Step::AtCrc;
            return true;
        }
        checkTag(tag);
        parameter_ = command_->find(tag);
        step_ = Step::AtLength;
        return true;
    }
    case Step::AtLength:
        return takeLength();
    case Step::AtValue:
        return takeValue();
    case Step::AtCrc: {
        const auto computed = crc_;
        const auto bytes = take(4);
        if (!bytes)
            return false;
        crc_ = computed;
        checkCrc(readNumber<std::uint32_t>(*bytes));
        step_ = Step::AtVersion;
        return true;
    }
    }
    return false;
}

std::optional<std::string_view> RequestReader::take(std::size_t count)
{
    if (buffer_.size() - position_ < count)
        return std::nullopt;
    const auto bytes = std::string_view(buffer_).substr(position_, count);
    crc_ = static_cast<std::uint32_t>(crc32_z(crc_, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
    position_ += count;
    return bytes;
}

void RequestReader::checkTag(Tag tag) const
{
    const auto at = position_ - 2;
    const auto* rule = command_->find(tag);
    if (!rule)
        throw WireError(at, "unknown parameter " + tagName(tag) + " in a " + tagName(message_.code) + " request");
    if (!rule->repeats && std::ranges::find(message_.parameters, tag, &Parameter::tag) != message_.parameters.end())
        throw WireError(at, "parameter " + tagName(tag) + " given twice");
    if (message_.parameters.size() == maxParameters)
        throw WireError(at, "more than " + std::to_string(maxParameters) + " parameters");
}

bool RequestReader::takeLength()
{
    const auto bytes = take(4);
    if (!bytes)
        return false;
    const auto at = position_ - 4;
    const auto length = readNumber<std::int32_t>(*bytes);
    const auto name = tagName(parameter_->tag);
    if (length < 0)
        throw WireError(at, "negative length " + std::to_string(length) + " of " + name);
    length_ = static_cast<std::size_t>(length);
    if (length_ > maxRequestSize - std::min(position_, maxRequestSize))
        throw WireError(at, "length " + std::to_string(length) + " of " + name + " exceeds the limit of " +
                                std::to_string(maxRequestSize) + " bytes a request");
    const auto wanted = fixedSize(parameter_->kind);
    if (wanted != 0 && length_ != wanted)
        throw WireError(at,
                        "length " + std::to_string(length) + " of " + name + " instead of " + std::to_string(wanted));
    step_ = Step::AtValue;
    return true;
}

bool RequestReader::takeValue()
{
    const auto at = position_;
    const auto bytes = take(length_);
    if (!bytes)
        return false;
    if (parameter_->kind == Kind::Bool && readNumber<std::uint8_t>(*bytes) > 1)
        throw WireError(at, "value of " + tagName(parameter_->tag) + " is neither 0 nor 1");
    if (parameter_->kind == Kind::Map) {
        try {
            decodeMap(*bytes);
        } catch (const WireError& error) {
            throw WireError(at + error.offset, tagName(parameter_->tag) + ": " + error.what());
        }
    }
    message_.parameters.push_back({parameter_->tag, parameter_->kind, std::string(*bytes)});
    step_ = Step::AtTag;
    return true;
}

void RequestReader::checkCrc(std::uint32_t received) const
{
    if (received == crc_)
        return;
    char text[64];
    std::snprintf(text, sizeof text, "CRC 0x%08x instead of 0x%08x", received, crc_);
    throw WireError(position_ - 4, text);
}

} // namespace standin
