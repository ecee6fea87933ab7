#pragma once

#include "Database.h"
#include "Wire.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

struct Recipient
{
    std::string address;
    std::string type; // to, cc or bc
};

// A message without its bytes.
struct StoredMessage
{
    std::string id;
    std::string sender;
    std::string subject;
    std::int32_t sensitivity = 0;
    StringMap configuration;
    std::vector<Recipient> recipients;

    bool isFor(std::string_view address) const;
    std::vector<std::string> addressesOf(std::string_view type) const;
};

struct Tracking
{
    std::int32_t locked = 0;
    std::string statusMessage;
    std::int64_t expires = 0;
};

// The messages behind the envelopes, what is tracked of their recipients, and the keys of those kept open.
class Messages
{
public:
    static constexpr std::int64_t sessionKeyMillis = 30 * 60'000;

    explicit Messages(Database& database) : database_(database) {}

    // Makes the message's id.
    void add(StoredMessage& message, const std::string& mime, std::int64_t attachments);
    // The message that an envelope refers to; a Refusal when there is none.
    StoredMessage ofEnvelope(std::string_view envelope) const;
    std::string mimeOf(const std::string& id) const;

    std::optional<Tracking> tracking(const std::string& id, const std::string& address) const;
    void noteOpened(const std::string& id, const std::string& address);
    void noteFailed(const std::string& id, const std::string& address);

    // The key of an address that has one, its life prolonged, else a new one.
    std::string keepOpen(const std::string& id, const std::string& address);
    bool isKeptOpen(const std::string& id, const std::string& address) const;
    // Whose key of this message it is.
    std::optional<std::string> keyHolder(const std::string& id, const std::string& key) const;

private:
    Database& database_;
};

} // namespace standin
