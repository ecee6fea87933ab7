#pragma once

#include <cstddef>
#include <string>

// One reply of each kind that the exports read, as bytes, with status 0 unless its comment says otherwise.
namespace Bench {

// A reply with nothing but its status.
std::string plainReply(const std::string& code);

std::string daemonStatus();
std::string loginSession();
std::string configErrors(std::size_t entries);
// An envelope of `size` bytes, with `localized` further forms of it.
std::string envelope(std::size_t size, std::size_t localized = 0);
// A decrypted message of `items` items of `size` bytes each.
std::string payload(std::size_t items, std::size_t size);
// The answer to an envelope that cannot be opened yet, with status 20.
std::string lockedPayload();
std::string trackingRecords(std::size_t count);
std::string keyServer(std::size_t entries);
std::string localizedTexts(std::size_t entries);
std::string enrollParameters(std::size_t entries);
std::string enrolled(std::size_t entries);

// A reply with the fewest bytes, padded to `size` in all by its status message.
std::string paddedTo(std::size_t size, std::string (*make)(const std::string& statusMessage));
std::string smallEnvelope(const std::string& statusMessage);
std::string smallPayload(const std::string& statusMessage);

} // namespace Bench
