#pragma once

#include "protocol/CommandException.h"
#include "protocol/CommandInputStream.h"

#include <cstdint>

namespace Merrow {

// Reads a parameter value that holds items, each preceded by its length. `readItem(length)` reads one. Counts in 64
// bits: no length that the daemon may send overflows.
template <class ReadItem>
void readCollection(CommandInputStream& stream, std::int32_t length, const char* mismatch, ReadItem readItem)
{
    std::int64_t remaining = length;
    while (remaining > 0) {
        const std::int32_t itemLength = stream.readLength();
        readItem(itemLength);
        remaining -= 4 + std::int64_t{itemLength};
    }
    if (remaining != 0) {
        raise(mismatch);
    }
}

} // namespace Merrow
