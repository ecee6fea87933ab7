#pragma once

#include "Accounts.h"
#include "Request.h"

#include <span>
#include <string>
#include <string_view>

// What reading and changing the tracking records have in common.
namespace standin {

struct TrackingField
{
    std::string_view name;
    std::string_view expression; // over the tables of trackingTables
    bool isText = false;
};

// What a record tells, in the order of its map's keys; also what can be sorted by and selected with.
std::span<const TrackingField> trackingFields();
// Throws a Refusal for a name that is none of them.
const TrackingField& trackingField(const std::string& name);

inline const std::string trackingTables = " FROM recipients r JOIN messages m ON m.id = r.message ";

// Whether the password in 'ky' is the owner's.
Verdict authenticateOwner(const Request& request, Accounts& accounts, const std::string& owner);

} // namespace standin
