#include "client/DaemonConnection.h"

#include "platform/Platform.h"
#include "text/Conversion.h"

namespace Client {

namespace {

constexpr std::uint16_t daemonPort = 53007;

} // namespace

std::int32_t daemonSocket = -1;

std::int32_t connectToDaemon()
{
    if (daemonSocket > 0) {
        return daemonSocket;
    }
    if (const int error = Platform::startSockets(); error != 0) {
        throw error;
    }
    daemonSocket = Platform::createSocket();
    if (!Platform::connectToLoopback(daemonSocket, daemonPort)) {
        static char message[64];
        Text::formatText(message, "Failed to connect - %d", Platform::lastSocketError());
        // Neither closed nor cleaned up after: the next call starts over.
        daemonSocket = -1;
        throw static_cast<const char*>(message);
    }
    return daemonSocket;
}

void closeConnection()
{
    if (daemonSocket > 0) {
        Platform::closeSocket(daemonSocket);
        Platform::cleanUpSockets();
        daemonSocket = -1;
    }
}

} // namespace Client
