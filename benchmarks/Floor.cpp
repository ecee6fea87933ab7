#include "Floor.h"

#include <cstdio>
#include <cstdlib>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Bench {

namespace {

void receiveAll(int socket, char* buffer, std::size_t size)
{
    while (size > 0) {
        const ssize_t received = recv(socket, buffer, size, 0);
        if (received <= 0) {
            die("benchmarks: the responder is gone");
        }
        buffer += received;
        size -= static_cast<std::size_t>(received);
    }
}

} // namespace

void die(const char* message)
{
    std::perror(message);
    std::exit(1);
}

sockaddr_in daemonAddress()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(53007);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void sendAtOnce(int socket)
{
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

void sendAll(int socket, std::string_view bytes, int flags)
{
    while (!bytes.empty()) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), flags | MSG_NOSIGNAL);
        if (sent <= 0) {
            return; // shows where the answer is missing
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

Floor::Floor() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const sockaddr_in address = daemonAddress();
    if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        die("benchmarks: the responder cannot be reached");
    }
    sendAtOnce(socket_);
}

Floor::~Floor()
{
    close(socket_);
}

void Floor::exchange(std::string_view request, std::size_t replySize)
{
    buffer_.resize(std::max(buffer_.size(), replySize));
    sendAll(socket_, request);
    receiveAll(socket_, buffer_.data(), replySize);
}

void Floor::exchangeInPieces(std::string_view request, const SystemCalls& calls)
{
    for (const std::size_t size : calls.sends) {
        const std::string_view piece = request.substr(0, size);
        request.remove_prefix(size);
        sendAll(socket_, piece, request.empty() ? 0 : MSG_MORE);
    }
    for (const std::size_t size : calls.receives) {
        buffer_.resize(std::max(buffer_.size(), size));
        receiveAll(socket_, buffer_.data(), size);
    }
}

} // namespace Bench
