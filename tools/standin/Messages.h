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

struct NewMessage
{
    std::string sender;
    std::string subject;
    std::int32_t sensitivity = 0;
    std::int64_t attachments = 0;
    StringMap configuration;
    std::vector<Recipient> recipients;
};

// A stored message without its bytes.
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
    bool locked = false;
    std::string statusMessage;
    std::int64_t expires = 0;
};

// The messages behind the envelopes, what is tracked of their recipients, and the keys of those kept open.
class Messages
{
public:
    static constexpr std::int64_t sessionKeyMillis = 30 * 60'000;

    explicit Messages(Database& database) : database_(database) {}

    // Returns the id.
    std::string add(const NewMessage& message, std::string_view mime);
    std::optional<StoredMessage> find(std::string_view id) const;
    std::string mimeOf(std::string_view id) const;

    std::optional<Tracking> tracking(std::string_view id, std::string_view address) const;
    void noteOpened(std::string_view id, std::string_view address);
    void noteFailed(std::string_view id, std::string_view address);

    // The key of an address that has one, its life prolonged, else a new one.
    std::string keepOpen(std::string_view id, std::string_view address);
    bool isKeptOpen(std::string_view id, std::string_view address) const;
    // Whose key of this message it is.
    std::optional<std::string> keyHolder(std::string_view id, std::string_view key) const;

private:
    Database& database_;
};

} // namespace standin
