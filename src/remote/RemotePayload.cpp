#include "remote/RemotePayload.h"

namespace Merrow {

TocEntry::TocEntry(CommandInputStream& stream, std::int32_t length)
{
    readItemFields(stream, length, "Length of TOC mismatch", *this);
}

void readValue(CommandInputStream& stream, std::int32_t length, std::vector<std::unique_ptr<TocEntry>>& items)
{
    readCollection(stream, length, "Length of items in Collection mismatch",
                   [&](std::int32_t itemLength) { items.push_back(std::make_unique<TocEntry>(stream, itemLength)); });
}

std::vector<TocEntry*> RemotePayload::getToc() const
{
    std::vector<TocEntry*> entries;
    entries.reserve(toc.size());
    for (const auto& entry : toc) {
        entries.push_back(entry.get());
    }
    return entries;
}

} // namespace Merrow
