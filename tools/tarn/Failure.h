#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <tarn/Errors.h>

namespace tarn {

// The process's exit codes; docs/tarn.md explains them to users. Besides these, 128 plus a signal's number.
enum class Exit {
    success = 0,
    refused = 1,
    usage = 2,
    noDaemon = 3,
    file = 4,
    exchange = 5,
    tooLarge = 6,
    timeout = 7
};

// Ends the command with a message for the user, an exit code, and what --json tells besides.
class Failure : public std::runtime_error
{
public:
    Failure(Exit code, const std::string& text, nlohmann::json object = nlohmann::json::object())
        : std::runtime_error(text), exitCode(code), details(std::move(object))
    {
    }

    const Exit exitCode;
    const nlohmann::json details;
};

// What a status is to a user, empty for one that is not known here.
std::string statusName(std::int32_t status);

// A status with its name.
std::string statusText(std::int32_t status);

// What the daemon's refusal of a request is to a user.
std::string describe(const StatusError& error);

// The same, or a text that says more, as the end of the command.
Failure refusal(const StatusError& error, const std::string& text, nlohmann::json details = nlohmann::json::object());

} // namespace tarn
