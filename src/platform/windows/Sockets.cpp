#include "platform/Platform.h"

#include <winsock2.h>

namespace Platform {

int startSockets()
{
    WSADATA data;
    return WSAStartup(MAKEWORD(1, 1), &data);
}

void cleanUpSockets()
{
    WSACleanup();
}

std::int32_t createSocket()
{
    // Socket handles fit in 32 bits on 64-bit Windows too: kernel handles are 32-bit numbers there.
    return static_cast<std::int32_t>(socket(AF_INET, SOCK_STREAM, 0));
}

namespace {

SOCKET handle(std::int32_t socket)
{
    return static_cast<SOCKET>(socket);
}

} // namespace

bool connectToLoopback(std::int32_t socket, std::uint16_t port)
{
    const hostent* host = gethostbyname("localhost");
    if (host == nullptr) {
        return false;
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr = *reinterpret_cast<const in_addr*>(host->h_addr_list[0]);
    if (connect(handle(socket), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return false;
    }
    const BOOL on = TRUE;
    setsockopt(handle(socket), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
    return true;
}

std::int32_t sendBytes(std::int32_t socket, const void* bytes, std::int32_t count)
{
    return send(handle(socket), static_cast<const char*>(bytes), count, 0);
}

std::int32_t receiveBytes(std::int32_t socket, void* bytes, std::int32_t count)
{
    return recv(handle(socket), static_cast<char*>(bytes), count, 0);
}

void closeSocket(std::int32_t socket)
{
    closesocket(handle(socket));
}

int lastSocketError()
{
    return WSAGetLastError();
}

} // namespace Platform
