#pragma once

#include <cstdint>

// The one connection to the daemon.
namespace Client {

// The socket's handle, -1 when there is no connection. Streams refer to this variable.
extern std::int32_t daemonSocket;

// Returns the socket, connecting first when there is no connection. Throws the system's error number when sockets
// cannot be started, and a text when the daemon cannot be reached.
std::int32_t connectToDaemon();

void closeConnection();

} // namespace Client
