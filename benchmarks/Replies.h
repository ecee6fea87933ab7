#pragma once

#include "Wire.h"

// One reply of each kind that the exports read, with status 0 unless its comment says otherwise.
namespace Bench {

// A reply with nothing but its status.
Message plainReply(Letters code, std::int16_t status = 0);

Message daemonStatus();
Message loginSession();
Message configErrors(std::size_t entries);
// An envelope of `size` bytes, with `localized` further forms of it.
Message envelope(std::size_t size, std::size_t localized = 0);
// A decrypted message of `items` items of `size` bytes each.
Message payload(std::size_t items, std::size_t size);
// What an envelope that cannot be opened yet is answered with.
Message lockedPayload();
Message trackingRecords(std::size_t count);
Message keyServer(std::size_t entries);
Message localizedTexts(std::size_t entries);
Message enrollParameters(std::size_t entries);
Message enrolled(std::size_t entries);

// A reply built with its fewest bytes and padded to `size` in all by its status message.
Message paddedTo(std::size_t size, Message (*make)(std::string_view statusMessage));
Message smallEnvelope(std::string_view statusMessage);
Message smallPayload(std::string_view statusMessage);

} // namespace Bench
