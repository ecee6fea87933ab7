#pragma once

#include "protocol/Codes.h"
#include "protocol/Crc32.h"
#include "text/StringMap.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace Merrow {

// Decodes replies, the counterpart of CommandOutputStream. Nothing is read ahead: each primitive read takes its own
// bytes and no more. Composite reads call the primitive ones through their virtual slots.
//
// Every failure is thrown as a pointer to a CommandException. The stream owns the texts of those that are formatted,
// so it must outlive their handlers.
//
// The operations' order is their slot order.
class CommandInputStream
{
public:
    CommandInputStream() = default;
    CommandInputStream(const CommandInputStream&) = delete;
    CommandInputStream& operator=(const CommandInputStream&) = delete;

    // Returns the reply's command code; fails when the version is another than ours.
    virtual std::uint16_t beginReply();
    // Checks the CRC.
    virtual void endReply();
    virtual std::uint16_t readCode();

    // Returns the number of bytes received, 0 to be called again, or a negative number when receiving has failed.
    virtual std::int32_t receiveRaw(char* buffer, std::int32_t count) = 0;

    virtual Tag readTag();
    virtual std::int32_t readLength();
    virtual std::string readString(std::int32_t length);
    virtual std::vector<std::string> readStringArray(std::int32_t total);
    virtual StringMap readStringMap(std::int32_t total);
    // Returns the number of bytes read: less than `count` only once receiving has failed.
    virtual std::int32_t readFully(char* buffer, std::int32_t count);
    virtual std::uint16_t readShort();
    virtual std::int32_t readInt();
    virtual std::int64_t readLong();
    virtual double readDouble();
    virtual bool readBool();

    // Whether receiving has failed: then nothing more is received, and loops over what is still to come must end.
    bool broken() const { return broken_; }

    // Throws a CommandException whose text this stream keeps.
    [[noreturn]] void fail(std::string message);

protected:
    ~CommandInputStream() = default;

private:
    template <class Integer>
    Integer readInteger();
    void growScratch(std::int32_t capacity);

    struct Free
    {
        void operator()(char* block) const { std::free(block); }
    };

    bool crcOn_ = true;
    bool broken_ = false;
    std::uint32_t crc_ = crcStart;
    std::unique_ptr<char, Free> scratch_;
    std::int32_t scratchCapacity_ = 0;
    std::string failure_;
};

} // namespace Merrow
