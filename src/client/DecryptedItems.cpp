#include "client/DecryptedItems.h"

#include <utility>

namespace Client {

DecryptedItems& decryptedItems()
{
    static DecryptedItems& items = *new DecryptedItems; // never destroyed, like the log
    return items;
}

void DecryptedItems::replaceWith(Merrow::RemotePayload& payload)
{
    std::vector<DecryptedItem> items;
    items.reserve(payload.toc.size());
    for (Merrow::TocEntry* entry : payload.getToc()) {
        items.push_back({.flags = static_cast<std::uint32_t>(entry->fl),
                         .type = static_cast<std::uint32_t>(entry->ty),
                         .name = std::move(entry->on),
                         .contentType = std::move(entry->fc),
                         .data = std::move(entry->da)});
    }
    items_ = std::move(items);
    cursor_ = 0;
}

const DecryptedItem* DecryptedItems::next() const
{
    return cursor_ < items_.size() ? &items_[cursor_] : nullptr;
}

} // namespace Client
