#pragma once

#include "protocol/Codes.h"
#include "protocol/Crc32.h"
#include "text/StringMap.h"

#include <cstdint>
#include <string>

namespace Merrow {

// Encodes requests: version, command code, tagged and length-prefixed parameters, end marker, CRC. All integers go out
// most significant byte first. There is no output buffer: each primitive write is one sendRaw, and composite writes
// call the primitive ones through their virtual slots, so that a subclass can step in at any level.
//
// The operations' order is their slot order.
class CommandOutputStream
{
public:
    CommandOutputStream() = default;
    CommandOutputStream(const CommandOutputStream&) = delete;
    CommandOutputStream& operator=(const CommandOutputStream&) = delete;

    virtual void beginCommand(std::uint16_t code);
    virtual void endCommand();
    virtual void writeTag(Tag tag);
    virtual void writeLength(std::int32_t length);

    // Returns the number of bytes sent, 0 to be called again for the same bytes, or a negative number when sending
    // has failed. Nothing is reported then: the failure shows when the reply is read.
    virtual std::int32_t sendRaw(const char* bytes, std::int32_t count) = 0;

    virtual void writeStringMapParam(Tag tag, StringMap entries);
    // A null pointer is sent as an empty parameter.
    virtual void writeBytesParam(Tag tag, const char* bytes, std::int32_t count);
    virtual void writeLongParam(Tag tag, std::int64_t value);
    virtual void writeDateParam(Tag tag, std::int32_t value);
    virtual void writeIntParam(Tag tag, std::int32_t value);
    virtual void writeBoolParam(Tag tag, bool value);
    virtual void writeShortParam(Tag tag, std::int16_t value);
    virtual void writeEmptyParam(Tag tag);

    virtual void writeBytes(const char* bytes, std::int32_t count);
    virtual void writeByte(std::uint8_t value);
    virtual void writeShort(std::uint16_t value);
    virtual void writeInt(std::int32_t value);
    virtual void writeLong(std::int64_t value);
    virtual void writeDate(std::int32_t value);

protected:
    ~CommandOutputStream() = default;

private:
    bool crcOn_ = true;
    std::uint32_t crc_ = crcStart;
};

} // namespace Merrow
