#pragma once

#include "protocol/CommandException.h"
#include "protocol/CommandInputStream.h"

#include <cstdint>
#include <string>
#include <vector>

// How the fields of replies and of the items in them are read: the field's type picks the stream's operation.
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

template <class Field>
struct Tagged
{
    Tag tag;
    Field& field;
};

template <class Field>
Tagged(Tag, Field&) -> Tagged<Field>;

// Reads a parameter's value into the field that has its tag. Returns false, with nothing read, when none has it.
template <class... Fields>
bool readField(CommandInputStream& stream, Tag parameter, std::int32_t length, Tagged<Fields>... fields)
{
    return ((parameter == fields.tag && (readValue(stream, length, fields.field), true)) || ...);
}

// Reads an item that consists of tagged parameters and has no end marker. The value of a tag that no field has is
// counted but stays in the stream. Counts in 64 bits: no length that the daemon may send overflows.
template <class... Fields>
void readItemFields(CommandInputStream& stream, std::int32_t length, const char* mismatch, Tagged<Fields>... fields)
{
    std::int64_t remaining = length;
    while (remaining > 0 && !stream.broken()) {
        const Tag parameter = stream.readTag();
        const std::int32_t valueLength = stream.readLength();
        readField(stream, parameter, valueLength, fields...);
        remaining -= 6 + std::int64_t{valueLength};
    }
    if (remaining != 0) {
        raise(mismatch);
    }
}

} // namespace Merrow
