#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <tarn/Errors.h>

namespace tarn {

// The process's exit codes; docs/tarn.md explains them to users.
enum class Exit { success = 0, refused = 1, usage = 2, noDaemon = 3, file = 4, exchange = 5, interrupted = 130 };

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

// What the daemon's refusal of a request is for the user; the text may say more than the error itself.
inline Failure refusal(const StatusError& error, const std::string& text,
                       nlohmann::json details = nlohmann::json::object())
{
    details["status"] = error.status();
    details["message"] = error.message();
    return {Exit::refused, text, std::move(details)};
}

} // namespace tarn
