#include "Connection.h"

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace standin {

namespace {

bool timeIsUp()
{
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

} // namespace

Connection::Connection(int socket, int number, std::chrono::seconds idleLimit)
    : socket_(socket), number_(number), idleLimit_(idleLimit)
{
    const int on = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const timeval limit{idleLimit.count(), 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

Connection::~Connection()
{
    close(socket_);
}

std::size_t Connection::read(char* into, std::size_t size)
{
    const auto count = recv(socket_, into, size, 0);
    if (count < 0 && timeIsUp()) {
        throw ConnectionError("nothing came for " + std::to_string(idleLimit_.count()) + " seconds");
    }
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

void Connection::send(std::string_view frame)
{
    while (!frame.empty()) {
        const auto count = ::send(socket_, frame.data(), frame.size(), MSG_NOSIGNAL);
        if (count < 0) {
            throw ConnectionError(timeIsUp() ? "the client does not take its reply" : std::strerror(errno));
        }
        frame.remove_prefix(static_cast<std::size_t>(count));
    }
}

void Connection::wait(std::chrono::milliseconds time)
{
    pollfd client{socket_, POLLRDHUP, 0};
    poll(&client, 1, static_cast<int>(time.count()));
}

void Connection::resetAtClose()
{
    const linger atOnce{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

void Connection::endReading()
{
    shutdown(socket_, SHUT_RD);
}

void Connection::endAll()
{
    shutdown(socket_, SHUT_RDWR);
}

} // namespace standin
