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
    SessionKeyInvalid = 200,
};

// A request that cannot be granted: what its reply says. Raised before anything was changed, or its changes are
// undone; an outcome whose changes must stay (a counted try) is a reply instead.
struct Refusal
{
    Status status;
    std::string message;
};

} // namespace standin
