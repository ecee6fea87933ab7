#pragma once

#include "TarnRemoteClient.h"
#include "platform/WideText.h"
#include "remote/RemoteMessageInformation.h"

#include <cstdint>
#include <memory>
#include <unordered_map>

namespace Client {

// Puts a record where it belongs: after the others when `match` is null, else into the entry it matches, whose former
// contents are then left in `record`. Returns whether it was appended.
bool addOrUpdate(TarnRecipientEntry* entries, std::uint32_t& count, TarnRecipientEntry* match,
                 TarnRecipientEntry& record);

// A record's text; a missing one counts as empty.
inline WideView textOf(const WideChar* text)
{
    return text == nullptr ? WideView() : WideView(text);
}

// An array of tracking records in task memory, as GetRecipientEntries returns it. What is not returned is released
// here, the texts before the array that holds them.
class TrackingRecords
{
public:
    // Room for `capacity` records.
    explicit TrackingRecords(std::size_t capacity);
    ~TrackingRecords();
    TrackingRecords(const TrackingRecords&) = delete;
    TrackingRecords& operator=(const TrackingRecords&) = delete;

    // Folds one in; the texts that this displaces are released.
    void fold(const Merrow::RemoteRecipientInformation& recipient);

    std::uint32_t count() const { return count_; }

    // Hands the array to the caller.
    TarnRecipientEntry* release();

private:
    struct Release
    {
        void operator()(TarnRecipientEntry* entries) const;
    };

    std::unique_ptr<TarnRecipientEntry[], Release> entries_;
    std::uint32_t count_ = 0;
    // The position of each message id and recipient: a search through the array for each record would take
    // quadratic time.
    std::unordered_map<WideText, std::uint32_t> positions_;
};

} // namespace Client
