#pragma once

#include <cstdint>
#include <string>

namespace standin {

// docs/standin.md tells how each is provoked.
enum class Status : std::int16_t {
    Ok = 0,
    WrongPassword = 2,
    PasswordNeeded = 5,
    SessionKeyAlive = 6,
    AskedBySender = 7,
    NotEnrolled = 11,
    NotARecipient = 15,
    UnknownEnvelope = 16,
    AccountDisabled = 17,
    TooManyTries = 18,
    Expired = 19,
    LockedWithMessage = 20,
    Locked = 21,
    EnrollmentUnfinished = 25,
    DamagedEnvelope = 26,
    NoEnvelope = 34,
    Missing = 100,
    BadValue = 101,
    NothingMatched = 102,
    ConfigurationUnreadable = 103,
    ConfigurationWrong = 104,
    NoSession = 105,
    AccountExists = 106,
    FormRefused = 107,
    NotAMessage = 108,
    StoreFailed = 109,
    InternalError = 110,
    TooLarge = 111,
    SessionKeyInvalid = 200,
};

// A request that cannot be granted: what its reply says. Raised before anything was changed, or its changes are
// undone; an outcome whose changes must stay (a counted try) is a reply instead.
struct Refusal
{
    Status status;
    std::string message;
};

// Throws the Refusal unless the condition holds.
inline void demand(bool condition, Status status, const std::string& message)
{
    if (!condition) {
        throw Refusal{status, message};
    }
}

inline void demandAtMost(std::size_t allowed, std::size_t size, const std::string& ofWhat)
{
    demand(size <= allowed, Status::TooLarge,
           ofWhat + ": " + std::to_string(size) + ", and at most " + std::to_string(allowed) + " allowed");
}

// What a check of an account or its password came to.
struct Verdict
{
    Status status = Status::Ok;
    std::string message;
    std::int64_t secondsToWait = 0;
};

} // namespace standin
