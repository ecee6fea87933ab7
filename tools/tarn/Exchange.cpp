#include "Exchange.h"

#include "Failure.h"
#include "Waiting.h"
#include <iostream>

namespace tarn {

namespace {

constexpr std::string_view linePrefix = "[TarnRemoteClient:";

// The log's fixed lines, and the daemon's own texts in it, which are not known before the call.
constexpr std::size_t logReserve = 8192;

std::string_view lastLine(std::string_view log)
{
    const auto start = log.rfind(linePrefix);
    return start == log.npos ? std::string_view() : log.substr(start);
}

std::string describe(const std::string& name, std::int32_t status, const std::string& message)
{
    std::string text = name + " was answered with status " + std::to_string(status);
    return message.empty() ? text : text + ": " + message;
}

} // namespace

std::int32_t Exchange::attempt(const std::string& name, const LogLoad& load,
                               const std::function<std::int32_t(char*)>& call)
{
    if (load.bytes > TARN_LOG_SIZE - logReserve)
        throw Failure(Exit::usage, "too much for one " + name + ": its operation log would take about " +
                                       std::to_string(load.bytes + logReserve) + " bytes and can hold " +
                                       std::to_string(TARN_LOG_SIZE) + "; " + load.advice);
    Buffer<char> logBuffer(TARN_LOG_SIZE);
    std::int32_t status = -1;
    {
        const Waiting waiting;
        status = call(logBuffer);
    }
    lastLog = logBuffer.get();
    if (showLog)
        std::cerr << "--- " << name << " ---\n" << lastLog << std::flush;
    return status;
}

void Exchange::run(const std::string& name, const LogLoad& load, const std::function<std::int32_t(char*)>& call)
{
    const std::int32_t status = attempt(name, load, call);
    if (brokeDown())
        throwBrokenExchange(name);
    if (status != 0) {
        const std::string message = statusMessage(lastLog);
        throw Refusal(status, message, describe(name, status, message));
    }
}

bool Exchange::brokeDown() const
{
    // The handler of a failed call writes the last line of its log.
    const auto line = lastLine(lastLog);
    return line.find("] Unexpected exception occured. GetLastError() : ") != line.npos ||
           line.find("] Unknown exception occured, setting status to -1. GetLastError() : ") != line.npos;
}

std::string statusMessage(std::string_view log)
{
    constexpr std::string_view label = "] Status message:";
    const auto start = log.rfind(label);
    if (start == log.npos)
        return "";
    std::string_view message = log.substr(start + label.size());
    // The message follows its label or stands on lines of its own below it.
    message = message.substr(0, message.find(std::string("\n") + std::string(linePrefix)));
    const auto first = message.find_first_not_of(" \n");
    if (first == message.npos)
        return "";
    return std::string(message.substr(first, message.find_last_not_of(" \n") + 1 - first));
}

void throwBrokenExchange(const std::string& name)
{
    throw Failure(Exit::exchange, "the exchange with the daemon broke down in " + name +
                                      ": what answers on its port does not keep to the protocol, or the connection "
                                      "was lost; --log shows how far it came");
}

} // namespace tarn
