#pragma once

#include "Sockets.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

// How a reply reaches the library, and what follows it.
struct Manner
{
    bool early = false;                    // it is sent before the call begins
    std::size_t packet = SIZE_MAX;         // bytes a send
    std::chrono::microseconds pause{0};    // between two sends
    std::chrono::milliseconds patience{2}; // how long a call may have nothing left to read before it is reset
    std::size_t resetAfter = SIZE_MAX;     // reset once so many bytes were sent and read
};

inline constexpr std::chrono::milliseconds patient = std::chrono::seconds(30);

// What a call came to.
struct Outcome
{
    std::int32_t result;
    std::string log;
    bool waited; // for more bytes than there were: a reset has ended it
};

// A daemon that answers calls badly, one at a time, each on a connection of its own where need be: the library's
// connection, which it never replaces itself, is exchanged under its number (Linux). So ten thousand bad replies take
// one process and a few seconds.
class HostileDaemon
{
public:
    using Call = std::function<std::int32_t(char* log)>;

    HostileDaemon() : listener_(sockets::listenOn(port)) {}
    ~HostileDaemon();

    // Runs a call, and answers it.
    Outcome answer(const std::string& reply, const Call& call, const Manner& manner);

    // Puts a fresh connection in the place of the library's.
    void renew();

private:
    static constexpr std::uint16_t port = 53007;

    void serve(const std::string& reply, const Manner& manner, const std::atomic<bool>& returned);
    bool unread() const;
    void learnSocket(const std::string& log);

    SOCKET listener_;
    SOCKET peer_ = sockets::none;   // our end of the library's connection
    SOCKET socket_ = sockets::none; // its end: the log tells the number
};
