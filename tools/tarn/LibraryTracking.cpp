#include "Library.h"

#include "Failure.h"
#include "Host.h"
#include "Text.h"
#include <memory>
#include <span>

namespace tarn {

namespace {

struct ReleaseTaskMemory
{
    void operator()(void* memory) const { host::releaseTaskMemory(memory); }
};
template <class T>
using TaskMemory = std::unique_ptr<T, ReleaseTaskMemory>;

std::string takeText(TarnWideChar* text)
{
    const TaskMemory<TarnWideChar> owner(text);
    return text ? toUtf8(text) : std::string();
}

SentRecord takeRecord(const TarnRecipientEntry& entry)
{
    SentRecord record;
    record.subject = takeText(entry.subject);
    record.state.recipient = takeText(entry.recipient);
    record.state.message = takeText(entry.statusMessage);
    record.messageId = takeText(entry.messageId);
    record.state.locked = (entry.flags & TARN_FLAG_LOCKED) != 0;
    record.state.expiry = entry.expiryDate;
    record.created = entry.createDate;
    record.firstOpened = entry.firstOpenDate;
    record.lastModified = entry.lastModifiedDate;
    record.tries = entry.numTries;
    record.flags = entry.flags;
    return record;
}

// The reply's recipients each take a line of the log.
LogLoad logLoadOf(const std::vector<std::string>& recipients)
{
    LogLoad load;
    load.add(0, recipients.size());
    return load;
}

} // namespace

Tracking Library::tracking(const std::string& envelope, const Access& access)
{
    LogLoad load;
    try {
        load = logLoadOf(recipients(envelope).addresses);
    } catch (const Refusal&) {
        // Then the answer to the question itself tells why.
    }
    load.add(access.configFile.size());
    load.advice = "\"tarn sent\" lists them, and --message-id sets them";

    Buffer<char> addresses(room::text), locks(room::text), expiries(room::text), messageId(room::value);
    Buffer<TarnWideChar> messages(room::text);
    std::uint32_t count = 0;
    exchange.run("GetLockExpireStatus", load, [&](char* log) {
        return GetLockExpireStatus(access.password.c_str(), envelope.c_str(), toWide(access.configFile).c_str(),
                                   addresses, locks, messages, expiries, messageId, &count, log);
    });

    Tracking result{messageId.get(), {}};
    if (count == 0)
        return result;
    const auto addressList = split(addresses.get(), TARN_LIST_DELIMITER);
    const auto lockList = split(locks.get(), TARN_LIST_DELIMITER);
    const auto messageList = split(toUtf8(messages.get()), TARN_LIST_DELIMITER);
    const auto expiryList = split(expiries.get(), TARN_LIST_DELIMITER);
    for (const auto* list : {&addressList, &lockList, &messageList, &expiryList})
        if (list->size() != count)
            throw Failure(Exit::exchange,
                          "the daemon's lists of recipients, locks, messages and dates differ in length");
    for (std::size_t i = 0; i < count; ++i)
        result.recipients.push_back(
            {addressList[i], lockList[i] == "1", messageList[i], std::strtoll(expiryList[i].c_str(), nullptr, 10)});
    return result;
}

void Library::setTracking(const std::string& envelope, const TrackingState& state, const Access& access)
{
    // One recipient a call: of several, only the last one's status would be returned.
    const char* recipient = state.recipient.c_str();
    const std::int32_t locked = state.locked;
    const WideString message = toWide(state.message);
    const TarnWideChar* messageText = message.c_str();
    exchange.run("SetLockExpireStatus", {access.configFile}, [&](char* log) {
        return SetLockExpireStatus(access.password.c_str(), envelope.c_str(), toWide(access.configFile).c_str(),
                                   &recipient, &locked, &messageText, &state.expiry, 1, log);
    });
}

SentPage Library::sent(const SentQuery& query, const Access& access)
{
    TarnRecipientEntry* entries = nullptr;
    std::uint32_t count = 0;
    SentPage page;
    exchange.run("GetRecipientEntries", {access.configFile}, [&](char* log) {
        return GetRecipientEntries(query.user.c_str(), access.password.c_str(), toWide(access.configFile).c_str(),
                                   &entries, query.start, &query.max, &count, &page.total, query.sortBy.c_str(),
                                   query.ascending, log);
    });
    const TaskMemory<TarnRecipientEntry> owner(entries);
    for (const auto& entry : std::span(entries, count))
        page.records.push_back(takeRecord(entry));
    return page;
}

void Library::setRecords(const std::vector<std::pair<std::string, std::string>>& fields, const TrackingState& state,
                         const Access& access)
{
    std::vector<const char*> names, values;
    for (const auto& [name, value] : fields) {
        names.push_back(name.c_str());
        values.push_back(value.c_str());
    }
    exchange.run("SetRecipientEntries", {access.configFile}, [&](char* log) {
        return SetRecipientEntries(access.password.c_str(), toWide(access.configFile).c_str(), names.data(),
                                   values.data(), static_cast<std::uint32_t>(names.size()), state.locked,
                                   toWide(state.message).c_str(), state.expiry, log);
    });
}

} // namespace tarn
