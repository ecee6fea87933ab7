#include "client/DecryptedItems.h"

#include <utility>

namespace Client {

DecryptedItems& decryptedItems()
{
    static DecryptedItems items;
    return items;
}

void DecryptedItems::replaceBy(Merrow::RemotePayload& payload)
{
    items_.clear();
    items_.reserve(payload.toc.size());
    for (Merrow::TocEntry* entry : payload.getToc()) {
        items_.push_back({.flags = static_cast<std::uint32_t>(entry->fl),
                          .type = static_cast<std::uint32_t>(entry->ty),
                          .name = std::move(entry->on),
                          .contentType = std::move(entry->fc),
                          .data = std::move(entry->da)});
    }
    cursor_ = 0;
}

const DecryptedItem* DecryptedItems::next() const
{
    return cursor_ < items_.size() ? &items_[cursor_] : nullptr;
}

} // namespace Client
