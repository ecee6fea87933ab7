#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace tarn {

// The process's exit codes; docs/tarn.md explains them to users.
enum class Exit { success = 0, refused = 1, usage = 2, noDaemon = 3, file = 4, exchange = 5, interrupted = 130 };

// Ends the command with a message for the user and an exit code.
class Failure : public std::runtime_error
{
public:
    Failure(Exit code, const std::string& text) : std::runtime_error(text), exitCode(code) {}

    const Exit exitCode;
};

// The daemon answered with a status other than 0.
class Refusal : public Failure
{
public:
    Refusal(std::int32_t statusCode, std::string daemonMessage, const std::string& text)
        : Failure(Exit::refused, text), status(statusCode), message(std::move(daemonMessage))
    {
    }

    const std::int32_t status;
    const std::string message;
    nlohmann::json details = nlohmann::json::object(); // what a command adds for --json
};

} // namespace tarn
