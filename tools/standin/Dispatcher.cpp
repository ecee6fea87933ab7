#include "Dispatcher.h"

#include "Commands.h"

#include <chrono>
#include <iostream>

namespace standin {

namespace {

Reply handle(const Request& request, Context& context)
{
    switch (request.code()) {
    case tag("ST"):
        return daemonStatus(request, context);
    case tag("SD"):
        return stopDaemon(request, context);
    case tag("LS"):
        return login(request, context);
    case tag("VC"):
        return verifyConfiguration(request, context);
    case tag("BE"):
        return buildEnvelope(request, context);
    case tag("DE"):
        return openEnvelope(request, context);
    case tag("MI"):
        return messageInformation(request, context);
    case tag("SI"):
        return setInformation(request, context);
    case tag("KV"):
        return keyServerVersion(request, context);
    case tag("LT"):
        return localizedTexts(request, context);
    case tag("EP"):
        return enrollmentParameters(request, context);
    case tag("EU"):
        return enrollUser(request, context);
    default:
        throw Refusal{Status::InternalError, "the command has no handler"};
    }
}

Reply handleInTransaction(const Request& request, Context& context)
{
    const auto* command = findCommand(request.code());
    if (!command || !command->usesStore)
        return handle(request, context);
    Transaction transaction(context.database);
    auto reply = handle(request, context);
    transaction.commit();
    return reply;
}

Reply answer(const Request& request, Context& context)
{
    try {
        return handleInTransaction(request, context);
    } catch (const Refusal& refusal) {
        return {request.code(), refusal.status, refusal.message};
    } catch (const StoreError& error) {
        std::cerr << "tarn-standin: store: " << error.what() << std::endl;
        return {request.code(), Status::StoreFailed, std::string("the store failed: ") + error.what()};
    } catch (const std::exception& error) {
        std::cerr << "tarn-standin: " << tagName(request.code()) << ": " << error.what() << std::endl;
        return {request.code(), Status::InternalError, std::string("the request failed: ") + error.what()};
    }
}

} // namespace

Reply dispatch(const Request& request, Context& context)
{
    const auto start = std::chrono::steady_clock::now();
    auto reply = answer(request, context);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    const bool granted = readNumber<std::int16_t>(reply.message().parameters.front().value) == 0;
    if (request.code() == tag("BE")) {
        context.encryptions.add(took.count());
        ++(granted ? context.encrypted : context.encryptionsFailed);
    } else if (request.code() == tag("DE")) {
        context.decryptions.add(took.count());
    }
    return reply;
}

} // namespace standin
