#include "protocol/CommandOutputStream.h"

#include "protocol/BigEndian.h"

#include <stdexcept>

namespace Merrow {

void CommandOutputStream::beginCommand(std::uint16_t code)
{
    crc_ = crcStart;
    writeShort(protocolVersion);
    writeTag(code);
}

void CommandOutputStream::endCommand()
{
    writeShort(endMarker);
    crcOn_ = false;
    writeInt(static_cast<std::int32_t>(~crc_));
    crc_ = crcStart;
    crcOn_ = true;
}

void CommandOutputStream::writeTag(Tag tag)
{
    writeShort(tag);
}

void CommandOutputStream::writeLength(std::int32_t length)
{
    writeInt(length);
}

void CommandOutputStream::writeStringMapParam(Tag tag, StringMap entries)
{
    std::string value;
    const auto append = [&value](const std::string& text) {
        const auto length = toBigEndian(static_cast<std::int32_t>(text.size()));
        value.append(length.data(), length.size());
        value.append(text);
    };
    for (const auto& [key, text] : entries) {
        append(key);
        append(text);
    }
    if (value.size() > INT32_MAX) {
        throw std::length_error("string too long");
    }
    writeBytesParam(tag, value.data(), static_cast<std::int32_t>(value.size()));
}

void CommandOutputStream::writeBytesParam(Tag tag, const char* bytes, std::int32_t count)
{
    if (bytes == nullptr) {
        writeEmptyParam(tag);
        return;
    }
    writeTag(tag);
    writeLength(count);
    writeBytes(bytes, count);
}

void CommandOutputStream::writeLongParam(Tag tag, std::int64_t value)
{
    writeTag(tag);
    writeLength(8);
    writeLong(value);
}

void CommandOutputStream::writeDateParam(Tag tag, std::int32_t value)
{
    writeTag(tag);
    writeLength(4);
    writeDate(value);
}

void CommandOutputStream::writeIntParam(Tag tag, std::int32_t value)
{
    writeTag(tag);
    writeLength(4);
    writeInt(value);
}

void CommandOutputStream::writeBoolParam(Tag tag, bool value)
{
    writeTag(tag);
    writeLength(1);
    writeByte(value ? 1 : 0);
}

void CommandOutputStream::writeShortParam(Tag tag, std::int16_t value)
{
    writeTag(tag);
    writeLength(2);
    writeShort(static_cast<std::uint16_t>(value));
}

void CommandOutputStream::writeEmptyParam(Tag tag)
{
    writeTag(tag);
    writeLength(0);
}

void CommandOutputStream::writeBytes(const char* bytes, std::int32_t count)
{
    std::int32_t offset = 0;
    while (offset < count) {
        const std::int32_t sent = sendRaw(bytes + offset, count - offset);
        if (sent < 0) {
            return;
        }
        if (crcOn_) {
            crc_ = updateCrc(crc_, bytes + offset, static_cast<std::size_t>(sent));
        }
        offset += sent;
    }
}

void CommandOutputStream::writeByte(std::uint8_t value)
{
    const char byte = static_cast<char>(value);
    writeBytes(&byte, 1);
}

void CommandOutputStream::writeShort(std::uint16_t value)
{
    writeBytes(toBigEndian(value).data(), 2);
}

void CommandOutputStream::writeInt(std::int32_t value)
{
    writeBytes(toBigEndian(value).data(), 4);
}

void CommandOutputStream::writeLong(std::int64_t value)
{
    writeBytes(toBigEndian(value).data(), 8);
}

void CommandOutputStream::writeDate(std::int32_t value)
{
    writeInt(value);
}

} // namespace Merrow
