#include "remote/RemoteEnvelope.h"

namespace Merrow {

LocalizedEnvelope::LocalizedEnvelope(CommandInputStream& stream, std::int32_t length)
{
    readItemFields(stream, length, "Length of localized envelope mismatch", *this);
}

void readValue(CommandInputStream& stream, std::int32_t length, std::vector<std::unique_ptr<LocalizedEnvelope>>& items)
{
    readCollection(stream, length, "Length of items in Collection mismatch", [&](std::int32_t itemLength) {
        items.push_back(std::make_unique<LocalizedEnvelope>(stream, itemLength));
    });
}

RemoteEnvelope::~RemoteEnvelope()
{
    // A vector may destroy its items in any order; theirs is from the last to the first.
    while (!items.empty()) {
        items.pop_back();
    }
}

} // namespace Merrow
