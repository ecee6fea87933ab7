#include "protocol/CommandInputSocket.h"

#include "platform/Platform.h"
#include "protocol/CommandException.h"

namespace Merrow {

std::int32_t CommandInputSocket::receiveRaw(char* buffer, std::int32_t count)
{
    const std::int32_t received = Platform::receiveBytes(*socket_, buffer, count);
    // Strictly below -1, as in sending: a failed receive is told to the reader as a negative count.
    if (received < -1) {
        raise("Error reading from socket");
    }
    return received;
}

} // namespace Merrow
