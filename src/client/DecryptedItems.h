#pragma once

#include "remote/RemotePayload.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Client {

struct DecryptedItem
{
    std::uint32_t flags;
    std::uint32_t type;
    std::string name;
    std::string contentType;
    std::string data;
};

// The items of the latest message that was decrypted, and a cursor at the next one to hand out.
class DecryptedItems
{
public:
    // Takes the items out of a payload; the former ones are released.
    void replaceWith(Merrow::RemotePayload& payload);

    // The item at the cursor; null when all were taken.
    const DecryptedItem* next() const;
    void advance() { ++cursor_; }

private:
    std::vector<DecryptedItem> items_;
    std::size_t cursor_ = 0;
};

DecryptedItems& decryptedItems();

} // namespace Client
