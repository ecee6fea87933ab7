#pragma once

// The tests' own sockets, alike on both systems.
#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>
using SOCKET = int;
#endif

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sockets {

constexpr SOCKET none = static_cast<SOCKET>(-1);

// Listens on a loopback port; 0 stands for any. Throws when the port is taken.
SOCKET listenOn(std::uint16_t port);
std::uint16_t portOf(SOCKET socket);

// The next connection, or `none` when there is none within the time.
SOCKET acceptFrom(SOCKET listener, std::chrono::milliseconds time);

// Appends what arrives within the time. Returns false once the peer has closed the connection.
bool receiveSome(SOCKET socket, std::string& bytes, std::chrono::milliseconds time);

void sendAll(SOCKET socket, std::string_view bytes);

void close(SOCKET socket);

// Closes so that the peer sees a reset.
void reset(SOCKET socket);

} // namespace sockets
