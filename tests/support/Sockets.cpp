#include "Sockets.h"

namespace sockets {

namespace {

void startSockets()
{
#ifdef _WIN32
    static WSADATA data;
    [[maybe_unused]] static const int started = WSAStartup(MAKEWORD(2, 2), &data);
#endif
}

template <class Value>
void setOption(SOCKET socket, int level, int name, const Value& value)
{
    setsockopt(socket, level, name, reinterpret_cast<const char*>(&value), sizeof value);
}

bool becomesReadable(SOCKET socket, std::chrono::milliseconds time)
{
    fd_set sockets;
    FD_ZERO(&sockets);
    FD_SET(socket, &sockets);
    timeval limit{};
    limit.tv_usec = static_cast<decltype(limit.tv_usec)>(time.count() * 1000);
    return select(static_cast<int>(socket) + 1, &sockets, nullptr, nullptr, &limit) > 0;
}

} // namespace

SOCKET listenOn(std::uint16_t port)
{
    startSockets();
    const SOCKET listener = socket(AF_INET, SOCK_STREAM, 0);
    setOption(listener, SOL_SOCKET, SO_REUSEADDR, 1);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(listener, 8) != 0) {
        throw std::runtime_error("set-up failure: port " + std::to_string(port) + " is taken");
    }
    return listener;
}

std::uint16_t portOf(SOCKET socket)
{
    sockaddr_in address{};
    auto size = static_cast<socklen_t>(sizeof address);
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

SOCKET acceptFrom(SOCKET listener, std::chrono::milliseconds time)
{
    if (!becomesReadable(listener, time)) {
        return none;
    }
    const SOCKET socket = accept(listener, nullptr, nullptr);
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
    return socket;
}

bool receiveSome(SOCKET socket, std::string& bytes, std::chrono::milliseconds time)
{
    if (!becomesReadable(socket, time)) {
        return true;
    }
    char block[65536];
    const auto received = recv(socket, block, sizeof block, 0);
    if (received <= 0) {
        return false;
    }
    bytes.append(block, static_cast<std::size_t>(received));
    return true;
}

void sendAll(SOCKET socket, std::string_view bytes)
{
    while (!bytes.empty()) {
#ifdef _WIN32
        const auto sent = send(socket, bytes.data(), static_cast<int>(bytes.size()), 0);
#else
        const auto sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
#endif
        if (sent <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void close(SOCKET socket)
{
#ifdef _WIN32
    closesocket(socket);
#else
    ::close(socket);
#endif
}

void reset(SOCKET socket)
{
    linger hard{};
    hard.l_onoff = 1;
    setOption(socket, SOL_SOCKET, SO_LINGER, hard);
    close(socket);
}

} // namespace sockets
