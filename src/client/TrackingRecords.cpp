#include "client/TrackingRecords.h"

#include "platform/Platform.h"
#include "text/Conversion.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace Client {

namespace {

void releaseTexts(TarnRecipientEntry& record)
{
    for (WideChar* text : {record.subject, record.recipient, record.statusMessage, record.messageId}) {
        Platform::releaseTaskMemory(text);
    }
}

struct ReleaseTexts
{
    void operator()(TarnRecipientEntry* record) const { releaseTexts(*record); }
};

void fill(TarnRecipientEntry& record, const Merrow::RemoteRecipientInformation& recipient)
{
    record.createDate = recipient.getCreateDate();
    record.firstOpenDate = recipient.getFirstOpenDate();
    record.lastModifiedDate = recipient.getLastModifiedDate();
    record.expiryDate = recipient.getExpiryDate();
    record.numTries = recipient.getNumTries();
    record.flags = recipient.getFlags();
    record.subject = Text::utf8ToTaskMemWide(recipient.getSubject().c_str());
    record.recipient = Text::utf8ToTaskMemWide(recipient.getTo().c_str());
    record.statusMessage = Text::utf8ToTaskMemWide(recipient.getStatusMsg().c_str());
    record.messageId = Text::utf8ToTaskMemWide(recipient.getMsgId().c_str());
}

} // namespace

bool addOrUpdate(TarnRecipientEntry* entries, std::uint32_t& count, TarnRecipientEntry* match,
                 TarnRecipientEntry& record)
{
    if (match != nullptr) {
        std::swap(*match, record);
        return false;
    }
    entries[count++] = record;
    return true;
}

TrackingRecords::TrackingRecords(std::size_t capacity)
    : entries_(static_cast<TarnRecipientEntry*>(
          Platform::allocateTaskMemory(std::max<std::size_t>(capacity, 1) * sizeof(TarnRecipientEntry))))
{
    if (entries_ == nullptr) {
        throw std::bad_alloc();
    }
    positions_.reserve(capacity);
}

TrackingRecords::~TrackingRecords()
{
    if (entries_ != nullptr) {
        std::for_each(entries_.get(), entries_.get() + count_, releaseTexts);
    }
}

void TrackingRecords::Release::operator()(TarnRecipientEntry* entries) const
{
    Platform::releaseTaskMemory(entries);
}

void TrackingRecords::fold(const Merrow::RemoteRecipientInformation& recipient)
{
    TarnRecipientEntry record{};
    const std::unique_ptr<TarnRecipientEntry, ReleaseTexts> leftOver(&record);
    fill(record, recipient);

    // The zero keeps the two texts apart: neither can hold one.
    WideText key(textOf(record.messageId));
    key.push_back(0);
    key.append(textOf(record.recipient));
    const auto [position, isNew] = positions_.try_emplace(std::move(key), count_);
    if (addOrUpdate(entries_.get(), count_, isNew ? nullptr : &entries_[position->second], record)) {
        record = {};
    }
}

TarnRecipientEntry* TrackingRecords::release()
{
    return entries_.release();
}

} // namespace Client
