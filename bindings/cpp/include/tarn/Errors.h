#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace tarn {

// A call of the library that did not end with status 0. A call that is not made at all, because of what it was given,
// throws a std::invalid_argument or a LogTooSmall instead.
class Error : public std::runtime_error
{
public:
    Error(const std::string& text, std::string function, std::string log)
        : std::runtime_error(text), function_(std::move(function)), log_(std::move(log))
    {
    }

    const std::string& function() const { return function_; } // the library's function
    const std::string& log() const { return log_; }           // the call's operation log

private:
    std::string function_;
    std::string log_;
};

// The daemon answered with a status other than 0. From startDaemon(): the system refused the launch, and status() is its
// answer.
class StatusError : public Error
{
public:
    StatusError(const std::string& function, std::int32_t status, const std::string& log, std::string detail = "");

    std::int32_t status() const { return status_; }
    const std::string& message() const { return message_; } // the daemon's, may be empty
    const std::string& detail() const { return detail_; }   // of a login: the text of status 25, the number of 18

private:
    std::int32_t status_;
    std::string message_;
    std::string detail_;
};

// The exchange with the daemon broke down. Bytes of its reply may still be on the connection and would be taken for the
// replies of the next calls: the process can use the library no more.
class ExchangeError : public Error
{
public:
    using Error::Error;
};

// The call was not made, because an exchange broke down earlier in this process.
class OutOfStep : public ExchangeError
{
public:
    using ExchangeError::ExchangeError;
};

// The daemon could not be reached; a later call may reach it.
class NoDaemon : public Error
{
public:
    using Error::Error;
};

// The daemon's answer contradicts itself.
class MalformedAnswer : public Error
{
public:
    using Error::Error;
};

// The call was not made, because its operation log could outgrow TARN_LOG_SIZE, at which the library ends the process.
class LogTooSmall : public std::length_error
{
public:
    using std::length_error::length_error;
};

} // namespace tarn
