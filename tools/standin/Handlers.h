#pragma once

#include "Database.h"
#include "Reply.h"
#include "Request.h"
#include "Settings.h"
#include "Statistics.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace standin {

// What the handlers share.
struct Context
{
    Context(Database& store, const Settings& given) : database(store), settings(given) {}

    Database& database;
    const Settings& settings;
    Statistics encryptions;
    Statistics decryptions;
    std::int64_t encrypted = 0;
    std::int64_t encryptionsFailed = 0;
    std::int64_t started = 0;

    std::mutex mutex; // held by whoever answers a request; what follows needs none
    std::atomic<std::int32_t> connectionsOpen = 0;
    std::atomic<std::int32_t> connectionsTotal = 0;
    std::atomic<bool> stopping = false;
};

// One for each command; each answers a well-formed request and may throw a Refusal or a StoreError.
Reply buildEnvelope(const Request& request, Context& context);
Reply daemonStatus(const Request& request, Context& context);
Reply enrollmentParameters(const Request& request, Context& context);
Reply enrollUser(const Request& request, Context& context);
Reply keyServerVersion(const Request& request, Context& context);
Reply localizedTexts(const Request& request, Context& context);
Reply login(const Request& request, Context& context);
Reply messageInformation(const Request& request, Context& context);
Reply openEnvelope(const Request& request, Context& context);
Reply setInformation(const Request& request, Context& context);
Reply stopDaemon(const Request& request, Context& context);
Reply verifyConfiguration(const Request& request, Context& context);

} // namespace standin
