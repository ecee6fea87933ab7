#include "TrackingRecords.h"

#include "Envelope.h"

#include <algorithm>
#include <array>
#include <utility>

namespace standin {

namespace {

constexpr std::array fields = {
    TrackingField{"FLAGS", "(r.locked * 2)"},
    TrackingField{"attachmentCount", "m.attachments"},
    TrackingField{"createDate", "m.created"},
    TrackingField{"expiryDate", "r.expires"},
    TrackingField{"firstOpenDate", "r.firstOpened"},
    TrackingField{"from", "m.sender", true},
    TrackingField{"id", "r.serial"},
    TrackingField{"lastFailOpenDate", "r.lastFailed"},
    TrackingField{"lastModifiedDate", "r.modified"},
    TrackingField{"lastOpenDate", "r.lastOpened"},
    TrackingField{"messageSize", "m.size"},
    TrackingField{"msgId", "m.id", true},
    TrackingField{"numTries", "r.tries"},
    TrackingField{"recipient", "r.address", true},
    TrackingField{"recipientCount", "m.recipients"},
    TrackingField{"recipientType", "r.type", true},
    TrackingField{"sensitivity", "m.sensitivity"},
    TrackingField{"statusLocked", "r.locked"},
    TrackingField{"statusMsg", "r.statusMessage", true},
    TrackingField{"subject", "m.subject", true},
    TrackingField{"to", "r.address", true},
};

} // namespace

std::span<const TrackingField> trackingFields()
{
    return fields;
}

const TrackingField& trackingField(const std::string& name)
{
    const auto field = std::ranges::find(fields, std::string_view(name), &TrackingField::name);
    if (field == fields.end())
        throw Refusal{Status::BadValue, "\"" + name + "\" is no field of a tracking record"};
    return *field;
}

Reply trackingRefusal(const Request& request, const Verdict& verdict)
{
    Reply reply(request.code(), verdict.status, verdict.message);
    if (verdict.status == Status::TooManyTries)
        reply.longNumber(tag("se"), verdict.secondsToWait);
    return reply;
}

Verdict authenticateOwner(const Request& request, Accounts& accounts, const std::string& owner)
{
    const auto& password = request.text(tag("ky"));
    if (password.empty())
        return {Status::PasswordNeeded, "the password of the sender is needed"};
    return accounts.authenticate(owner, password);
}

StoredMessage trackedMessage(const Request& request, Database& database)
{
    auto message = Messages(database).find(readEnvelope(request.text(tag("en"))));
    if (!message)
        throw Refusal{Status::UnknownEnvelope, "the message of this envelope is not in the store"};
    return std::move(*message);
}

} // namespace standin
