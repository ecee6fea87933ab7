#pragma once

#include <exception>

namespace Merrow {

// What the protocol layer and the reply objects throw, always as a pointer to a heap object that is never deleted. The
// message is neither copied nor owned.
class CommandException : public std::exception
{
public:
    explicit CommandException(const char* message) : message_(message) {}

    const char* what() const noexcept override { return message_; }

private:
    const char* message_;
};

// The one place where such an exception is made.
[[noreturn]] inline void raise(const char* message)
{
    throw new CommandException(message);
}

} // namespace Merrow
