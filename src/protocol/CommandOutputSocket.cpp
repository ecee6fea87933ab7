#include "protocol/CommandOutputSocket.h"

#include "platform/Platform.h"
#include "protocol/CommandException.h"

namespace Merrow {

std::int32_t CommandOutputSocket::sendRaw(const char* bytes, std::int32_t count)
{
    const std::int32_t sent = Platform::sendBytes(*socket_, bytes, count);
    // Strictly below -1: a failed send raises nothing here; it shows when the reply is read.
    if (sent < -1) {
        raise("Error writing to socket");
    }
    return sent;
}

} // namespace Merrow
