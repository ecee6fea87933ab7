#pragma once

#include "Connection.h"
#include "Handlers.h"
#include "Trace.h"

#include <csignal>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace standin {

class ListenError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Serves all connections from one loop that waits on all sockets at once: a client that stalls holds up nobody.
class Server
{
public:
    // Listens on the loopback interface; port 0 takes any free one.
    Server(std::uint16_t port, Context& context, Trace& trace);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::uint16_t port() const;
    // Until the flag is set by a signal that is let through only while waiting, or a client stops the daemon.
    void run(const volatile std::sig_atomic_t& stopSignal);

private:
    void acceptClients();
    bool serve(Connection& connection, bool readable);
    bool answerRequests(Connection& connection);

    int listener_;
    int lastNumber_ = 0;
    Context& context_;
    Trace& trace_;
    std::vector<std::unique_ptr<Connection>> connections_;
};

} // namespace standin
