#pragma once

#include "remote/RemoteLogin.h"

#include <list>
#include <memory>
#include <string_view>

namespace Merrow {

// What the daemon knows about one recipient of a message: a map of field names to texts.
class RemoteRecipientInformation final : public RemoteResponse
{
public:
    RemoteRecipientInformation(CommandInputStream& stream, std::int32_t length);

    StringMap fields; // 'da'

    StringMap getFirstMap() const { return fields; }

    // The text of a field, empty when it is missing. The numbers are converted from it: what follows the leading
    // digits is ignored, what is no number is 0, what is out of range is the nearest number in it.
    std::string getField(std::string_view name) const;

    std::string getMsgId() const;
    std::string getTo() const;
    std::string getSubject() const;
    std::string getStatusMsg() const;
    std::int32_t getFlags() const;
    std::int32_t getNumTries() const;
    std::int64_t getCreateDate() const;
    std::int64_t getExpiryDate() const;
    std::int64_t getFirstOpenDate() const;
    std::int64_t getLastModifiedDate() const;
};

// The reply to 'MI'.
class RemoteMessageInformation final : public RemoteLoginResponse
{
public:
    // The recipients that getRecipients handed out outlive this object.
    using Recipients = std::list<std::shared_ptr<RemoteRecipientInformation>>;

    explicit RemoteMessageInformation(CommandInputStream& stream);

    std::string id;
    std::int32_t si = 0;
    std::int32_t mx = 0;
    Recipients recipients; // 'ri'

    Recipients getRecipients() const { return recipients; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

} // namespace Merrow
