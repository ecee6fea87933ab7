#include "TrackingRecords.h"

#include <algorithm>
#include <array>

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
    demand(field != fields.end(), Status::BadValue, "\"" + name + "\" is not a field of a tracking record");
    return *field;
}

Verdict authenticateOwner(const Request& request, Accounts& accounts, const std::string& owner)
{
    const auto& password = request.text(tag("ky"));
    return password.empty() ? Verdict{Status::PasswordNeeded, "the password of the sender is needed"}
                            : accounts.authenticate(owner, password);
}

} // namespace standin
