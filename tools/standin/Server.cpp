#include "Server.h"

#include "Dispatcher.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace standin {

namespace {

constexpr std::size_t maxConnections = 64;
constexpr timespec farewellTime = {2, 0};

std::ostream& complain(const Connection& connection)
{
    return std::cerr << "tarn-standin: connection " << connection.number() << ": ";
}

[[noreturn]] void failToListen(const std::string& where)
{
    const std::string why = errno == EADDRINUSE ? "another program listens there" : std::strerror(errno);
    throw ListenError("cannot listen on " + where + ": " + why);
}

} // namespace

Server::Server(std::uint16_t port, Context& context, Trace& trace)
    : listener_(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)), context_(context), trace_(trace)
{
    const auto where = "127.0.0.1:" + std::to_string(port);
    const int on = 1;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (listener_ < 0)
        failToListen(where);
    setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener_, SOMAXCONN) != 0) {
        const int error = errno;
        close(listener_);
        errno = error;
        failToListen(where);
    }
}

Server::~Server()
{
    close(listener_);
}

std::uint16_t Server::port() const
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

void Server::run(const volatile std::sig_atomic_t& stopSignal)
{
    sigset_t allSignals;
    sigemptyset(&allSignals);
    const auto hasOutput = [](const auto& connection) { return connection->hasOutput(); };
    while (!stopSignal && !(context_.stopping && std::ranges::none_of(connections_, hasOutput))) {
        std::vector<pollfd> polled;
        for (const auto& connection : connections_) {
            const short input = context_.stopping ? 0 : POLLIN;
            polled.push_back({connection->socket(), connection->hasOutput() ? short{POLLOUT} : input, 0});
        }
        polled.push_back({listener_, short{POLLIN}, 0});
        const auto* limit = context_.stopping ? &farewellTime : nullptr;
        const int ready = ppoll(polled.data(), polled.size(), limit, &allSignals);
        if (ready == 0)
            return;
        if (ready < 0) {
            if (errno == EINTR)
                continue;
            throw std::runtime_error(std::string("waiting for clients failed: ") + std::strerror(errno));
        }
        // From the last to the first, so that a connection can be erased without moving those still to be served.
        for (auto i = connections_.size(); i > 0; --i)
            if (polled[i - 1].revents != 0 && !serve(*connections_[i - 1], (polled[i - 1].revents & POLLOUT) == 0))
                connections_.erase(connections_.begin() + static_cast<std::ptrdiff_t>(i - 1));
        if (polled.back().revents != 0 && !context_.stopping)
            acceptClients();
        context_.connectionsOpen = static_cast<std::int32_t>(connections_.size());
    }
}

void Server::acceptClients()
{
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (socket < 0)
        return;
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    auto connection = std::make_unique<Connection>(socket, ++lastNumber_);
    if (connections_.size() == maxConnections) {
        complain(*connection) << "refused, there are " << maxConnections << " already" << std::endl;
        return;
    }
    context_.connectionsTotal = lastNumber_;
    connections_.push_back(std::move(connection));
}

// False when the connection is to be closed.
bool Server::serve(Connection& connection, bool readable)
{
    try {
        if (!readable)
            return connection.sendMore() && answerRequests(connection);
        if (!connection.receive()) {
            if (!connection.reader().idle())
                complain(connection) << "lost in the middle of a request" << std::endl;
            return false;
        }
        return answerRequests(connection);
    } catch (const WireError& error) {
        complain(connection) << "bad request, byte " << error.offset << ": " << error.what() << "; closed" << std::endl;
    } catch (const std::exception& error) {
        complain(connection) << error.what() << "; closed" << std::endl;
    }
    return false;
}

bool Server::answerRequests(Connection& connection)
{
    while (!connection.hasOutput() && !context_.stopping) {
        auto message = connection.reader().next();
        if (!message)
            return true;
        const Request request(std::move(*message));
        trace_.request(connection.number(), request.message());
        const auto reply = dispatch(request, context_);
        trace_.reply(connection.number(), reply.message());
        if (!connection.send(encodeFrame(reply.message())))
            return false;
    }
    return true;
}

} // namespace standin
