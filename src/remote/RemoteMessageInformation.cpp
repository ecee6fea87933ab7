#include "remote/RemoteMessageInformation.h"

namespace Merrow {

RemoteRecipientInformation::RemoteRecipientInformation(CommandInputStream& stream, std::int32_t length)
{
    // The sentence ends there, without a number.
    readItemFields(stream, length, "Length of RecipientInformation mismatch by", *this);
}

std::string RemoteRecipientInformation::getField(std::string_view name) const
{
    const auto entry = fields.find(std::string(name));
    return entry == fields.end() ? std::string() : entry->second;
}

void readValue(CommandInputStream& stream, std::int32_t length,
               std::list<std::shared_ptr<RemoteRecipientInformation>>& recipients)
{
    readCollection(stream, length, "Length of RecipientInformation array mismatch", [&](std::int32_t itemLength) {
        recipients.push_back(std::make_shared<RemoteRecipientInformation>(stream, itemLength));
    });
}

} // namespace Merrow
