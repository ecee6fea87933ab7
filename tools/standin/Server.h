#pragma once

#include "Connection.h"
#include "Handlers.h"
#include "Trace.h"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>

namespace standin {

class ListenError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Serves each connection in a thread of its own: a client that stalls holds up nobody.
class Server
{
public:
    // Listens on the loopback interface, at the port of the settings.
    Server(Context& context, Trace& trace);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::uint16_t port() const;
    // Until one of the signals comes, which the caller has blocked. A stop request sends the process SIGTERM.
    void run(const sigset_t& ending);

private:
    void acceptClients();
    void takeIn(int socket);
    void complainAboutNewcomer(const std::string& why);
    void serve(Connection& connection);
    void answerRequests(Connection& connection);
    void endConnections();

    int listener_;
    Context& context_;
    Trace& trace_;
    std::chrono::steady_clock::time_point complained_{};
    std::mutex mutex_; // of what follows
    std::condition_variable changed_;
    std::map<int, Connection> connections_;
};

} // namespace standin
