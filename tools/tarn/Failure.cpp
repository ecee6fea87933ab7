#include "Failure.h"

#include <TarnRemoteClient.h>
#include <map>

namespace tarn {

std::string statusName(std::int32_t status)
{
    static const std::map<std::int32_t, std::string> names{
        {TARN_STATUS_NONE, "no status"},
        {TARN_STATUS_WRONG_PASSWORD, "wrong address or password"},
        {TARN_STATUS_PASSWORD_NEEDED, "a password opens it"},
        {TARN_STATUS_SESSION_KEY_ALIVE, "kept open: a session key or a password opens it"},
        {TARN_STATUS_ASKED_BY_SENDER, "this address sent it"},
        {TARN_STATUS_NOT_ENROLLED, "not enrolled yet"},
        {TARN_STATUS_NOT_A_RECIPIENT, "not a recipient"},
        {TARN_STATUS_UNKNOWN_ENVELOPE, "the message is unknown"},
        {TARN_STATUS_ACCOUNT_DISABLED, "the account is disabled"},
        {TARN_STATUS_TOO_MANY_TRIES, "too many tries"},
        {TARN_STATUS_EXPIRED, "expired"},
        {TARN_STATUS_LOCKED_WITH_MESSAGE, "locked"},
        {TARN_STATUS_LOCKED, "locked"},
        {TARN_STATUS_ENROLLMENT_UNFINISHED, "enrollment not finished"},
        {TARN_STATUS_DAMAGED_ENVELOPE, "the envelope is damaged"},
        {TARN_STATUS_NO_ENVELOPE, "this is not an envelope"},
        {TARN_STATUS_SESSION_KEY_INVALID, "the session key is not valid"},
    };
    const auto name = names.find(status);
    return name == names.end() ? "" : name->second;
}

std::string statusText(std::int32_t status)
{
    const std::string name = statusName(status);
    return "status " + std::to_string(status) + (name.empty() ? "" : " (" + name + ")");
}

std::string describe(const StatusError& error)
{
    const std::string message = error.message().empty() ? "" : ": " + error.message();
    return error.function() + " was answered with " + statusText(error.status()) + message;
}

Failure refusal(const StatusError& error, const std::string& text, nlohmann::json details)
{
    details["status"] = error.status();
    details["message"] = error.message();
    return {Exit::refused, text, std::move(details)};
}

} // namespace tarn
