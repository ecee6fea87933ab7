#pragma once

#include "Wire.h"

#include <mutex>
#include <string_view>

namespace standin {

// Prints requests and replies to standard output, one line for each. Secrets are masked.
class Trace
{
public:
    explicit Trace(bool on) : on_(on) {}

    void request(int connection, const Message& message) { print(connection, "->", message); }
    void reply(int connection, const Message& message) { print(connection, "<-", message); }

private:
    void print(int connection, std::string_view direction, const Message& message);

    std::mutex mutex_;
    bool on_;
};

} // namespace standin
