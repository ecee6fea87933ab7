#include "platform/Platform.h"
#include "platform/posix/Outbox.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Platform {

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
    // 0 stands for no socket above: it comes up where the host has closed its standard input.
    const int other = fcntl(descriptor, F_DUPFD_CLOEXEC, 1);
    close(descriptor);
    return other;
}

// An interrupted connect goes on by itself: what is left is to wait for its end.
static bool finishConnecting(int socket, const sockaddr* address, socklen_t size)
{
    int result = 0;
    do {
        result = connect(socket, address, size);
    } while (result != 0 && (errno == EINTR || errno == EALREADY));
    return result == 0 || errno == EISCONN;
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

static Outbox outbox;

std::int32_t sendBytes(std::int32_t socket, const void* bytes, std::int32_t count)
{
    return outbox.send(socket, static_cast<const char*>(bytes), count);
}

// Linux tells of a reset once and then speaks of an orderly end. Winsock keeps telling, and so do we.
static bool wasReset(int socket)
{
    tcp_info info{};
    socklen_t size = sizeof info;
    return getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 && info.tcpi_state == TCP_CLOSE;
}

std::int32_t receiveBytes(std::int32_t socket, void* bytes, std::int32_t count)
{
    outbox.release();
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
    outbox.release();
    close(socket);
}

int lastSocketError()
{
    return errno;
}

} // namespace Platform
