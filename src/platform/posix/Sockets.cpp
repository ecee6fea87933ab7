#include "platform/Platform.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Platform {

namespace {

// The socket whose small sends the kernel holds back, so that a request of many of them travels in few packets.
std::int32_t heldSocket = -1;

// Whatever is held back leaves when the hold ends, when a packet is full, or by itself after 200 ms.
void holdSmallSends(std::int32_t socket, bool hold)
{
    const int value = hold ? 1 : 0;
    setsockopt(socket, IPPROTO_TCP, TCP_CORK, &value, sizeof value);
    heldSocket = hold ? socket : -1;
}

// Linux reports a reset once and then an orderly end. Winsock keeps reporting it, and so do we.
bool wasReset(int socket)
{
    tcp_info info{};
    socklen_t size = sizeof info;
    return getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 && info.tcpi_state == TCP_CLOSE;
}

// An interrupted connect goes on by itself: what is left is to wait for its end.
bool finishConnecting(int socket, const sockaddr* address, socklen_t size)
{
    int result = 0;
    do {
        result = connect(socket, address, size);
    } while (result != 0 && (errno == EINTR || errno == EALREADY));
    return result == 0 || errno == EISCONN;
}

} // namespace

int startSockets()
{
    return 0;
}

void cleanUpSockets() {}

std::int32_t createSocket()
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor != 0) {
        return descriptor;
    }
    // The callers take 0 for no socket. The system hands it out when the host has closed its standard input.
    const int other = fcntl(descriptor, F_DUPFD_CLOEXEC, 1);
    close(descriptor);
    return other;
}

bool connectToLoopback(std::int32_t socket, std::uint16_t port)
{
    const hostent* host = gethostbyname("localhost");
    if (host == nullptr) {
        return false;
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    std::memcpy(&address.sin_addr, host->h_addr_list[0], sizeof address.sin_addr);
    if (!finishConnecting(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address)) {
        return false;
    }
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return true;
}

std::int32_t sendBytes(std::int32_t socket, const void* bytes, std::int32_t count)
{
    if (socket != heldSocket) {
        holdSmallSends(socket, true);
    }
    ssize_t sent = 0;
    do {
        sent = send(socket, bytes, static_cast<std::size_t>(count), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return static_cast<std::int32_t>(sent);
}

std::int32_t receiveBytes(std::int32_t socket, void* bytes, std::int32_t count)
{
    if (socket == heldSocket) {
        holdSmallSends(socket, false);
    }
    ssize_t received = 0;
    do {
        received = recv(socket, bytes, static_cast<std::size_t>(count), 0);
    } while (received < 0 && errno == EINTR);
    if (received == 0 && wasReset(socket)) {
        errno = ECONNRESET;
        return -1;
    }
    return static_cast<std::int32_t>(received);
}

void closeSocket(std::int32_t socket)
{
    if (socket == heldSocket) {
        heldSocket = -1;
    }
    close(socket);
}

int lastSocketError()
{
    return errno;
}

} // namespace Platform
