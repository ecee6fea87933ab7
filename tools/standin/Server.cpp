#include "Server.h"

#include "Dispatcher.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace standin {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t maxConnections = 64;
constexpr auto farewellTime = 2s;
constexpr auto complaintInterval = 1s;
constexpr auto retryInterval = 1s;

[[noreturn]] void failToListen(const std::string& where)
{
    const std::string why = errno == EADDRINUSE ? "another program listens there" : std::strerror(errno);
    throw ListenError("cannot listen on " + where + ": " + why);
}

void complain(const Connection& connection, const std::string& text)
{
    // One insertion, so that the lines of several threads do not mix.
    std::cerr << "tarn-standin: connection " + std::to_string(connection.number()) + ": " + text + "; closed\n";
}

} // namespace

Server::Server(Context& context, Trace& trace)
    : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), context_(context), trace_(trace)
{
    const auto port = context.settings.port;
    const auto where = "127.0.0.1:" + std::to_string(port);
    if (listener_ < 0) {
        failToListen(where);
    }
    const int on = 1;
    setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
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

void Server::run(const sigset_t& ending)
{
    std::thread acceptor(&Server::acceptClients, this);
    int signal = 0;
    sigwait(&ending, &signal);
    {
        const std::lock_guard lock(mutex_);
        context_.stopping = true;
    }
    changed_.notify_all();
    shutdown(listener_, SHUT_RDWR);
    acceptor.join();
    endConnections();
}

void Server::acceptClients()
{
    while (!context_.stopping) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0) {
            takeIn(socket);
        } else if (!context_.stopping && errno != ECONNABORTED && errno != EINTR) {
            // Out of descriptors or memory, as a rule: somebody has to leave first.
            complainAboutNewcomer(std::string("clients have to wait: ") + std::strerror(errno));
            std::unique_lock lock(mutex_);
            const auto before = connections_.size();
            changed_.wait_for(lock, retryInterval, [&] { return context_.stopping || connections_.size() < before; });
        }
    }
}

void Server::takeIn(int socket)
{
    const std::lock_guard lock(mutex_);
    if (connections_.size() == maxConnections) {
        close(socket);
        complainAboutNewcomer("a client is refused: there are " + std::to_string(maxConnections) + " already");
        return;
    }
    const int number = ++context_.connectionsTotal;
    auto& connection = connections_.try_emplace(number, socket, number, context_.settings.idleLimit).first->second;
    ++context_.connectionsOpen;
    try {
        std::thread(&Server::serve, this, std::ref(connection)).detach();
    } catch (const std::system_error& error) {
        complainAboutNewcomer(std::string("a client is refused: ") + error.what());
        --context_.connectionsOpen;
        connections_.erase(number);
    }
}

// Clients that come again and again must not fill the terminal, or the disk that a log is on.
void Server::complainAboutNewcomer(const std::string& why)
{
    const auto now = std::chrono::steady_clock::now();
    if (now - complained_ >= complaintInterval) {
        std::cerr << "tarn-standin: " + why + "\n";
        complained_ = now;
    }
}

void Server::serve(Connection& connection)
{
    try {
        answerRequests(connection);
    } catch (const WireError& error) {
        complain(connection, "bad request, byte " + std::to_string(error.offset) + ": " + error.what());
    } catch (const ConnectionError& error) {
        connection.resetAtClose();
        complain(connection, error.what());
    } catch (const std::exception& error) {
        complain(connection, error.what());
    }
    const std::lock_guard lock(mutex_);
    --context_.connectionsOpen;
    connections_.erase(connection.number());
    changed_.notify_all();
}

void Server::answerRequests(Connection& connection)
{
    const auto& faults = context_.settings.faults;
    RequestReader reader(connection);
    int replies = 0;
    while (!context_.stopping) {
        auto message = reader.next();
        if (!message || context_.stopping) {
            return;
        }
        const Request request(std::move(*message));
        trace_.request(connection.number(), request.message());
        if (replies++ == faults.repliesBeforeReset) {
            connection.resetAtClose();
            return;
        }
        const auto reply = dispatch(request, context_);
        connection.wait(faults.delay);
        trace_.reply(connection.number(), reply.message());
        connection.send(encodeFrame(reply.message()));
    }
    kill(getpid(), SIGTERM);
}

// Replies under way are given some time.
void Server::endConnections()
{
    std::unique_lock lock(mutex_);
    for (auto& [number, connection] : connections_) {
        connection.endReading();
    }
    const auto haveEnded = [this] { return connections_.empty(); };
    if (changed_.wait_for(lock, farewellTime, haveEnded)) {
        return;
    }
    for (auto& [number, connection] : connections_) {
        connection.endAll();
    }
    changed_.wait(lock, haveEnded);
}

} // namespace standin
