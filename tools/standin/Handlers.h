#pragma once

#include "Database.h"
#include "Reply.h"
#include "Request.h"
#include "Statistics.h"

#include <cstdint>

namespace standin {

// What the handlers share.
struct Context
{
    explicit Context(Database& store) : database(store) {}

    Database& database;
    Statistics encryptions;
    Statistics decryptions;
    std::int64_t encrypted = 0;
    std::int64_t encryptionsFailed = 0;
    std::int64_t started = 0;
    std::int32_t connectionsOpen = 0;
    std::int32_t connectionsTotal = 0;
    bool stopping = false;
};

// One for each command; each answers a well-formed request and may throw a Refusal or a StoreError.
Reply daemonStatus(const Request& request, Context& context);
Reply stopDaemon(const Request& request, Context& context);
Reply login(const Request& request, Context& context);
Reply verifyConfiguration(const Request& request, Context& context);
Reply buildEnvelope(const Request& request, Context& context);
Reply openEnvelope(const Request& request, Context& context);
Reply messageInformation(const Request& request, Context& context);
Reply setInformation(const Request& request, Context& context);
Reply keyServerVersion(const Request& request, Context& context);
Reply localizedTexts(const Request& request, Context& context);
Reply enrollmentParameters(const Request& request, Context& context);
Reply enrollUser(const Request& request, Context& context);

} // namespace standin
