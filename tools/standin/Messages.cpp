#include "Messages.h"

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
    for (const auto& recipient : recipients)
        if (recipient.type == type)
            addresses.push_back(recipient.address);
    return addresses;
}

std::string Messages::add(const NewMessage& message, std::string_view mime)
{
    const auto id = randomId();
    const auto now = nowMillis();
    const auto configuration = encodeMap(message.configuration);
    database_.execute("INSERT INTO messages (id, sender, subject, created, size, sensitivity, attachments, recipients,"
                      " configuration, mime) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                      id, message.sender, message.subject, now, static_cast<std::int64_t>(mime.size()),
                      std::int64_t{message.sensitivity}, message.attachments,
                      static_cast<std::int64_t>(message.recipients.size()), Blob{configuration}, Blob{mime});
    auto insert = database_.prepare("INSERT INTO recipients (message, address, type, modified) VALUES (?, ?, ?, ?)");
    for (const auto& recipient : message.recipients)
        insert.bind(id, recipient.address, recipient.type, now).step();
    return id;
}

std::optional<StoredMessage> Messages::find(std::string_view id) const
{
    auto row = database_.query("SELECT sender, subject, sensitivity, configuration FROM messages WHERE id = ?", id);
    if (!row.step())
        return std::nullopt;
    StoredMessage message{std::string(id),        row.text(0), row.text(1), static_cast<std::int32_t>(row.number(2)),
                          decodeMap(row.view(3)), {}};
    auto recipients = database_.query("SELECT address, type FROM recipients WHERE message = ? ORDER BY serial", id);
    while (recipients.step())
        message.recipients.push_back({recipients.text(0), recipients.text(1)});
    return message;
}

std::string Messages::mimeOf(std::string_view id) const
{
    auto row = database_.query("SELECT mime FROM messages WHERE id = ?", id);
    return row.step() ? row.text(0) : std::string();
}

std::optional<Tracking> Messages::tracking(std::string_view id, std::string_view address) const
{
    auto row = database_.query(
        "SELECT locked, statusMessage, expires FROM recipients WHERE message = ? AND address = ?", id, address);
    if (!row.step())
        return std::nullopt;
    return Tracking{row.number(0) != 0, row.text(1), row.number(2)};
}

void Messages::noteOpened(std::string_view id, std::string_view address)
{
    const auto now = nowMillis();
    database_.execute("UPDATE recipients SET tries = tries + 1, lastOpened = ?, modified = ?,"
                      " firstOpened = CASE firstOpened WHEN 0 THEN ? ELSE firstOpened END"
                      " WHERE message = ? AND address = ?",
                      now, now, now, id, address);
}

void Messages::noteFailed(std::string_view id, std::string_view address)
{
    const auto now = nowMillis();
    database_.execute(
        "UPDATE recipients SET tries = tries + 1, lastFailed = ?, modified = ? WHERE message = ? AND address = ?", now,
        now, id, address);
}

std::string Messages::keepOpen(std::string_view id, std::string_view address)
{
    const auto now = nowMillis();
    database_.execute("DELETE FROM sessionKeys WHERE expires <= ?", now);
    auto row = database_.query("SELECT key FROM sessionKeys WHERE message = ? AND address = ?", id, address);
    const auto key = row.step() ? row.text(0) : randomId();
    database_.execute("INSERT OR REPLACE INTO sessionKeys (key, message, address, expires) VALUES (?, ?, ?, ?)", key,
                      id, address, now + sessionKeyMillis);
    return key;
}

bool Messages::isKeptOpen(std::string_view id, std::string_view address) const
{
    return database_
        .query("SELECT 1 FROM sessionKeys WHERE message = ? AND address = ? AND expires > ?", id, address, nowMillis())
        .step();
}

std::optional<std::string> Messages::keyHolder(std::string_view id, std::string_view key) const
{
    auto row = database_.query("SELECT address FROM sessionKeys WHERE message = ? AND key = ? AND expires > ?", id, key,
                               nowMillis());
    if (!row.step())
        return std::nullopt;
    return row.text(0);
}

} // namespace standin
