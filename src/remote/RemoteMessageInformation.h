#pragma once

#include "remote/MessageFields.h"
#include "remote/RemoteLogin.h"
#include "text/Decimal.h"

#include <list>
#include <memory>
#include <string_view>

namespace Merrow {

// What the daemon knows about one recipient of a message: a map of field names to texts.
class RemoteRecipientInformation final : public RemoteResponse
{
public:
    RemoteRecipientInformation(CommandInputStream& stream, std::int32_t length);

    StringMap fields;

    bool anyField(auto visit) { return visit(tag("da"), fields); }

    const StringMap& getFirstMap() const { return fields; }

    // The text of a field, empty when it is missing. The numbers are converted from it: what follows the leading
    // digits is ignored, a text that is not a number gives 0, one out of range the nearest number in it.
    std::string getField(std::string_view name) const;

    std::string getMsgId() const { return getField(Field::msgId); }
    std::string getTo() const { return getField(Field::to); }
    std::string getSubject() const { return getField(Field::subject); }
    std::string getStatusMsg() const { return getField(Field::statusMsg); }
    std::int32_t getFlags() const { return Text::decimal<std::int32_t>(getField(Field::flags)); }
    std::int32_t getNumTries() const { return Text::decimal<std::int32_t>(getField(Field::numTries)); }
    std::int64_t getCreateDate() const { return Text::decimal<std::int64_t>(getField(Field::createDate)); }
    std::int64_t getExpiryDate() const { return Text::decimal<std::int64_t>(getField(Field::expiryDate)); }
    std::int64_t getFirstOpenDate() const { return Text::decimal<std::int64_t>(getField(Field::firstOpenDate)); }
    std::int64_t getLastModifiedDate() const { return Text::decimal<std::int64_t>(getField(Field::lastModifiedDate)); }
};

void readValue(CommandInputStream& stream, std::int32_t length,
               std::list<std::shared_ptr<RemoteRecipientInformation>>& recipients);

// The reply to 'MI'.
class RemoteMessageInformation final : public WithFields<RemoteMessageInformation, RemoteLoginResponse>
{
public:
    // Shared, because those that getRecipients returned must outlive this object.
    using Recipients = std::list<std::shared_ptr<RemoteRecipientInformation>>;

    explicit RemoteMessageInformation(CommandInputStream& stream) { readResponse(code("MI"), stream); }

    std::string id;
    std::int32_t si = 0;
    std::int32_t mx = 0;
    Recipients recipients;

    const Recipients& getRecipients() const { return recipients; }

    bool anyField(auto visit)
    {
        return visit(tag("id"), id) || visit(tag("si"), si) || visit(tag("mx"), mx) || visit(tag("ri"), recipients);
    }
};

} // namespace Merrow
