#include "remote/RemoteMessageInformation.h"

#include "remote/Collections.h"
#include "remote/MessageFields.h"
#include "text/Decimal.h"

namespace Merrow {

RemoteRecipientInformation::RemoteRecipientInformation(CommandInputStream& stream, std::int32_t length)
{
    // The sentence ends there, without a number.
    readCountedParameters(stream, length, "Length of RecipientInformation mismatch by",
                          [&](Tag parameter, std::int32_t valueLength) {
                              if (parameter == tag("da")) {
                                  fields = stream.readStringMap(valueLength);
                              }
                          });
}

std::string RemoteRecipientInformation::getField(std::string_view name) const
{
    const auto entry = fields.find(std::string(name));
    return entry == fields.end() ? std::string() : entry->second;
}

std::string RemoteRecipientInformation::getMsgId() const
{
    return getField(Field::msgId);
}

std::string RemoteRecipientInformation::getTo() const
{
    return getField(Field::to);
}

std::string RemoteRecipientInformation::getSubject() const
{
    return getField(Field::subject);
}

std::string RemoteRecipientInformation::getStatusMsg() const
{
    return getField(Field::statusMsg);
}

std::int32_t RemoteRecipientInformation::getFlags() const
{
    return Text::decimal<std::int32_t>(getField(Field::flags));
}

std::int32_t RemoteRecipientInformation::getNumTries() const
{
    return Text::decimal<std::int32_t>(getField(Field::numTries));
}

std::int64_t RemoteRecipientInformation::getCreateDate() const
{
    return Text::decimal<std::int64_t>(getField(Field::createDate));
}

std::int64_t RemoteRecipientInformation::getExpiryDate() const
{
    return Text::decimal<std::int64_t>(getField(Field::expiryDate));
}

std::int64_t RemoteRecipientInformation::getFirstOpenDate() const
{
    return Text::decimal<std::int64_t>(getField(Field::firstOpenDate));
}

std::int64_t RemoteRecipientInformation::getLastModifiedDate() const
{
    return Text::decimal<std::int64_t>(getField(Field::lastModifiedDate));
}

RemoteMessageInformation::RemoteMessageInformation(CommandInputStream& stream)
{
    readResponse(code("MI"), stream);
}

void RemoteMessageInformation::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    switch (parameter) {
    case tag("id"):
        id = stream.readString(length);
        break;
    case tag("si"):
        si = stream.readInt();
        break;
    case tag("mx"):
        mx = stream.readInt();
        break;
    case tag("ri"):
        readCollection(stream, length, "Length of RecipientInformation array mismatch", [&](std::int32_t itemLength) {
            recipients.push_back(std::make_shared<RemoteRecipientInformation>(stream, itemLength));
        });
        break;
    default:
        RemoteLoginResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
