#include "Messages.h"

#include "Envelope.h"
#include "Password.h"
#include "Texts.h"

#include <algorithm>

namespace standin {

bool StoredMessage::isFor(std::string_view address) const
{
    return std::ranges::find(recipients, address, &Recipient::address) != recipients.end();
}

std::vector<std::string> StoredMessage::addressesOf(std::string_view type) const
{
    std::vector<std::string> addresses;
    for (const auto& recipient : recipients) {
        if (recipient.type == type) {
            addresses.push_back(recipient.address);
        }
    }
    return addresses;
}

void Messages::add(StoredMessage& message, const std::string& mime, std::int64_t attachments)
{
    message.id = randomId();
    const auto now = nowMillis();
    const auto configuration = encodeMap(message.configuration);
    auto insert = query(database_,
                        "INSERT INTO messages (id, sender, subject, created, size, sensitivity, attachments,"
                        " recipients, configuration, mime) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                        message.id, message.sender, message.subject, now, static_cast<std::int64_t>(mime.size()),
                        message.sensitivity, attachments, static_cast<std::int64_t>(message.recipients.size()));
    insert.bindNoCopy(9, configuration.data(), static_cast<int>(configuration.size()));
    insert.bindNoCopy(10, mime.data(), static_cast<int>(mime.size()));
    insert.exec();
    for (const auto& recipient : message.recipients) {
        execute(database_, "INSERT INTO recipients (message, address, type, modified) VALUES (?, ?, ?, ?)", message.id,
                recipient.address, recipient.type, now);
    }
}

StoredMessage Messages::ofEnvelope(std::string_view envelope) const
{
    const auto id = readEnvelope(envelope);
    auto row = query(database_, "SELECT sender, subject, sensitivity, configuration FROM messages WHERE id = ?", id);
    if (!row.executeStep()) {
        throw Refusal{Status::UnknownEnvelope, "the message of this envelope is not in the store"};
    }
    StoredMessage message{
        id, row.getColumn(0), row.getColumn(1), row.getColumn(2), decodeMap(row.getColumn(3).getString()), {}};
    auto recipients = query(database_, "SELECT address, type FROM recipients WHERE message = ? ORDER BY serial", id);
    while (recipients.executeStep()) {
        message.recipients.push_back(recipients.getColumns<Recipient, 2>());
    }
    return message;
}

std::string Messages::mimeOf(const std::string& id) const
{
    return findText(database_, "SELECT mime FROM messages WHERE id = ?", id).value();
}

std::optional<Tracking> Messages::tracking(const std::string& id, const std::string& address) const
{
    auto row =
        query(database_, "SELECT locked, statusMessage, expires FROM recipients WHERE message = ? AND address = ?", id,
              address);
    if (!row.executeStep()) {
        return std::nullopt;
    }
    return row.getColumns<Tracking, 3>();
}

void Messages::noteOpened(const std::string& id, const std::string& address)
{
    const auto now = nowMillis();
    execute(database_,
            "UPDATE recipients SET tries = tries + 1, lastOpened = ?, modified = ?,"
            " firstOpened = CASE firstOpened WHEN 0 THEN ? ELSE firstOpened END"
            " WHERE message = ? AND address = ?",
            now, now, now, id, address);
}

void Messages::noteFailed(const std::string& id, const std::string& address)
{
    const auto now = nowMillis();
    execute(database_,
            "UPDATE recipients SET tries = tries + 1, lastFailed = ?, modified = ? WHERE message = ? AND address = ?",
            now, now, id, address);
}

std::string Messages::keepOpen(const std::string& id, const std::string& address)
{
    const auto now = nowMillis();
    execute(database_, "DELETE FROM sessionKeys WHERE expires <= ?", now);
    const auto key = findText(database_, "SELECT key FROM sessionKeys WHERE message = ? AND address = ?", id, address)
                         .value_or(randomId());
    execute(database_, "INSERT OR REPLACE INTO sessionKeys (key, message, address, expires) VALUES (?, ?, ?, ?)", key,
            id, address, now + sessionKeyMillis);
    return key;
}

bool Messages::isKeptOpen(const std::string& id, const std::string& address) const
{
    return findText(database_, "SELECT key FROM sessionKeys WHERE message = ? AND address = ? AND expires > ?", id,
                    address, nowMillis())
        .has_value();
}

std::optional<std::string> Messages::keyHolder(const std::string& id, const std::string& key) const
{
    return findText(database_, "SELECT address FROM sessionKeys WHERE message = ? AND key = ? AND expires > ?", id, key,
                    nowMillis());
}

} // namespace standin
