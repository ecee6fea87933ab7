#pragma once

#include "protocol/CommandException.h"
#include "protocol/CommandInputStream.h"

#include <cstdint>

// The two loops inside a reply that run on a byte count. They count in 64 bits: no length the daemon may send
// overflows.
namespace Merrow {

// A parameter value that holds items, each behind its own length. `readItem(length)` reads one.
template <class ReadItem>
void readCollection(CommandInputStream& stream, std::int32_t length, const char* mismatch, ReadItem readItem)
{
    std::int64_t remaining = length;
    while (remaining > 0 && !stream.broken()) {
        const std::int32_t itemLength = stream.readLength();
        remaining -= 4;
        readItem(itemLength);
        remaining -= itemLength;
    }
    if (remaining != 0) {
        raise(mismatch);
    }
}

// An item made of tagged parameters. `readParameter(tag, length)` reads the value of a tag it knows; the value of any
// other tag is counted but stays in the stream.
template <class ReadParameter>
void readCountedParameters(CommandInputStream& stream, std::int32_t length, const char* mismatch,
                           ReadParameter readParameter)
{
    std::int64_t remaining = length;
    while (remaining > 0 && !stream.broken()) {
        const Tag tag = stream.readTag();
        const std::int32_t valueLength = stream.readLength();
        remaining -= 6;
        readParameter(tag, valueLength);
        remaining -= valueLength;
    }
    if (remaining != 0) {
        raise(mismatch);
    }
}

} // namespace Merrow
