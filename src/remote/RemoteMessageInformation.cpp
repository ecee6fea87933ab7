#include "remote/RemoteMessageInformation.h"

#include "remote/Collections.h"
#include "remote/Fields.h"

namespace Merrow {

RemoteRecipientInformation::RemoteRecipientInformation(CommandInputStream& stream, std::int32_t length)
{
    // The sentence ends there, without a number.
    readItemFields(stream, length, "Length of RecipientInformation mismatch by", Tagged{tag("da"), fields});
}

std::string RemoteRecipientInformation::getField(std::string_view name) const
{
    const auto entry = fields.find(std::string(name));
    return entry == fields.end() ? std::string() : entry->second;
}

void RemoteMessageInformation::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (parameter == tag("ri")) {
        readCollection(stream, length, "Length of RecipientInformation array mismatch", [&](std::int32_t itemLength) {
            recipients.push_back(std::make_shared<RemoteRecipientInformation>(stream, itemLength));
        });
    } else if (!readField(stream, parameter, length, Tagged{tag("id"), id}, Tagged{tag("si"), si},
                          Tagged{tag("mx"), mx})) {
        RemoteLoginResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
