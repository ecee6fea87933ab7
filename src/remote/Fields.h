#pragma once

#include "protocol/CommandException.h"
#include "protocol/CommandInputStream.h"

#include <cstdint>
#include <string>
#include <vector>

// How the fields of replies and of the items in them are read: a class lists its fields in `anyField`, which calls
// `visit` with each tag and field in turn until it returns true; the field's type picks the stream's operation.
namespace Merrow {

inline void readValue(CommandInputStream& stream, std::int32_t, std::int16_t& field)
{
    field = static_cast<std::int16_t>(stream.readShort());
}

inline void readValue(CommandInputStream& stream, std::int32_t, std::int32_t& field)
{
    field = stream.readInt();
}

inline void readValue(CommandInputStream& stream, std::int32_t, std::int64_t& field)
{
    field = stream.readLong();
}

inline void readValue(CommandInputStream& stream, std::int32_t, double& field)
{
    field = stream.readDouble();
}

inline void readValue(CommandInputStream& stream, std::int32_t length, std::string& field)
{
    field = stream.readString(length);
}

inline void readValue(CommandInputStream& stream, std::int32_t length, std::vector<std::string>& field)
{
    field = stream.readStringArray(length);
}

inline void readValue(CommandInputStream& stream, std::int32_t length, StringMap& field)
{
    field = stream.readStringMap(length);
}

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

// Reads a parameter's value into the field that has its tag. Returns false, with nothing read, when none has it.
bool readField(CommandInputStream& stream, Tag parameter, std::int32_t length, auto& object)
{
    return object.anyField([&stream, parameter, length](Tag tag, auto& field) {
        return tag == parameter && (readValue(stream, length, field), true);
    });
}

// Reads an item that consists of tagged parameters and has no end marker. The value of a tag that no field has is
// counted but stays in the stream. Counts in 64 bits: no length that the daemon may send overflows.
void readItemFields(CommandInputStream& stream, std::int32_t length, const char* mismatch, auto& item)
{
    std::int64_t remaining = length;
    while (remaining > 0 && !stream.broken()) {
        const Tag parameter = stream.readTag();
        const std::int32_t valueLength = stream.readLength();
        readField(stream, parameter, valueLength, item);
        remaining -= 6 + std::int64_t{valueLength};
    }
    if (remaining != 0) {
        raise(mismatch);
    }
}

} // namespace Merrow
