#include <TarnRemoteClient.h>
#include <tarn/Client.h>

#include "OperationLog.h"
#include "OutputBuffer.h"
#include "Text.h"
#include <charconv>
#include <new>
#include <span>

namespace tarn {

using namespace detail;

namespace {

// The array that the library allocates for its caller, with the texts in it.
struct Entries
{
    TarnRecipientEntry* first = nullptr;
    std::uint32_t count = 0;

    Entries() = default;
    Entries(const Entries&) = delete;
    Entries& operator=(const Entries&) = delete;
    ~Entries()
    {
        for (const auto& entry : std::span(first, count)) {
            for (auto* text : {entry.subject, entry.recipient, entry.statusMessage, entry.messageId}) {
                releaseTaskMemory(text);
            }
        }
        releaseTaskMemory(first);
    }
};

SentRecord toRecord(const TarnRecipientEntry& entry)
{
    const auto text = [](const TarnWideChar* wide) { return wide ? toUtf8(wide) : std::string(); };
    SentRecord record;
    record.subject = text(entry.subject);
    record.state.recipient = text(entry.recipient);
    record.state.message = text(entry.statusMessage);
    record.messageId = text(entry.messageId);
    record.state.locked = (entry.flags & TARN_FLAG_LOCKED) != 0;
    record.state.expiry = entry.expiryDate;
    record.created = entry.createDate;
    record.firstOpened = entry.firstOpenDate;
    record.lastModified = entry.lastModifiedDate;
    record.tries = entry.numTries;
    record.flags = entry.flags;
    return record;
}

std::int64_t toDate(const std::string& text)
{
    std::int64_t date = 0;
    std::from_chars(text.data(), text.data() + text.size(), date);
    return date;
}

} // namespace

Tracking Client::tracking(const std::string& envelope, const Access& access)
{
    LogLoad load{access.configFile};
    try {
        load.addLines(recipients(envelope).addresses.size());
    } catch (const StatusError&) {
        // Then the answer to the question itself tells why.
    }

    OutputText<char> addresses(room::text);
    OutputText<char> locks(room::text);
    OutputText<TarnWideChar> messages(room::text);
    OutputText<char> expiries(room::text);
    OutputText<char> messageId(room::value);
    std::uint32_t count = 0;
    run("GetLockExpireStatus", load, {&addresses, &locks, &messages, &expiries, &messageId}, [&](char* log) {
        return GetLockExpireStatus(Narrow(access.password), Narrow(envelope), Wide(access.configFile), addresses, locks,
                                   messages, expiries, messageId, &count, log);
    });

    Tracking result{messageId.text(), {}};
    if (count == 0) {
        return result;
    }
    const auto addressList = split(addresses.text(), TARN_LIST_DELIMITER);
    const auto lockList = split(locks.text(), TARN_LIST_DELIMITER);
    const auto messageList = split(messages.text(), TARN_LIST_DELIMITER);
    const auto expiryList = split(expiries.text(), TARN_LIST_DELIMITER);
    for (const auto* list : {&addressList, &lockList, &messageList, &expiryList}) {
        if (list->size() != count) {
            refuseAnswer("GetLockExpireStatus", "its lists of recipients, locks, messages and dates differ in length");
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        result.recipients.push_back({addressList[i], lockList[i] == "1", messageList[i], toDate(expiryList[i])});
    }
    return result;
}

void Client::setTracking(const std::string& envelope, const TrackingState& state, const Access& access)
{
    const Narrow address(state.recipient);
    const Wide message(refuseListDelimiter(state.message));
    const char* recipient = address;
    const std::int32_t locked = state.locked;
    const TarnWideChar* messageText = message;
    run("SetLockExpireStatus", {access.configFile, state.recipient, state.message}, {}, [&](char* log) {
        return SetLockExpireStatus(Narrow(access.password), Narrow(envelope), Wide(access.configFile), &recipient,
                                   &locked, &messageText, &state.expiry, 1, log);
    });
}

SentPage Client::sent(const SentQuery& query, const Access& access)
{
    Entries entries;
    SentPage page;
    run("GetRecipientEntries", {access.configFile, query.user, query.sortBy}, {}, [&](char* log) {
        return GetRecipientEntries(Narrow(query.user), Narrow(access.password), Wide(access.configFile), &entries.first,
                                   query.start, &query.max, &entries.count, &page.total, Narrow(query.sortBy),
                                   query.ascending, log);
    });
    if (!entries.first) { // no memory was left for it
        throw std::bad_alloc();
    }
    for (const auto& entry : std::span(entries.first, entries.count)) {
        page.records.push_back(toRecord(entry));
    }
    return page;
}

void Client::setRecords(const std::vector<KeyValue>& fields, const TrackingState& state, const Access& access)
{
    std::vector<const char*> names;
    std::vector<const char*> values;
    LogLoad load{access.configFile, state.message};
    for (const auto& [name, value] : fields) {
        names.push_back(Narrow(name));
        values.push_back(Narrow(value));
        load.add(name).add(value);
    }
    const Wide message(refuseListDelimiter(state.message));
    run("SetRecipientEntries", load, {}, [&](char* log) {
        return SetRecipientEntries(Narrow(access.password), Wide(access.configFile), names.data(), values.data(),
                                   static_cast<std::uint32_t>(names.size()), state.locked, message, state.expiry, log);
    });
}

} // namespace tarn
