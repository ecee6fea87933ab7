#include "Dispatcher.h"

#include "Commands.h"

#include <chrono>
#include <iostream>

namespace standin {

namespace {

void demandSizes(const Request& request, const CommandRule& command)
{
    for (const auto& parameter : request.message().parameters) {
        demandAtMost(command.find(parameter.tag)->maxSize, parameter.value.size(),
                     "bytes of " + tagName(parameter.tag));
    }
}

Reply handle(const Request& request, Context& context)
{
    const auto& command = *findCommand(request.code());
    demandSizes(request, command);
    if (!command.usesStore) {
        return command.handler(request, context);
    }
    Transaction transaction(context.database, SQLite::TransactionBehavior::IMMEDIATE);
    auto reply = command.handler(request, context);
    transaction.commit();
    return reply;
}

Reply answer(const Request& request, Context& context)
{
    try {
        return handle(request, context);
    } catch (const Refusal& refusal) {
        return {request.code(), refusal.status, refusal.message};
    } catch (const StoreError& error) {
        std::cerr << std::string("tarn-standin: store: ") + error.what() + "\n";
        return {request.code(), Status::StoreFailed, std::string("the store failed: ") + error.what()};
    } catch (const std::exception& error) {
        std::cerr << "tarn-standin: " + tagName(request.code()) + ": " + error.what() + "\n";
        return {request.code(), Status::InternalError, std::string("the request failed: ") + error.what()};
    }
}

} // namespace

Reply dispatch(const Request& request, Context& context)
{
    const auto& answers = context.settings.faults.answers;
    if (const auto told = answers.find(request.code()); told != answers.end()) {
        return {request.code(), static_cast<Status>(told->second), "answered as --answer says"};
    }
    const std::lock_guard lock(context.mutex);
    const auto start = std::chrono::steady_clock::now();
    auto reply = answer(request, context);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    if (request.code() == tag("BE")) {
        context.encryptions.add(took.count());
        ++(reply.status() == Status::Ok ? context.encrypted : context.encryptionsFailed);
    } else if (request.code() == tag("DE")) {
        context.decryptions.add(took.count());
    }
    return reply;
}

} // namespace standin
