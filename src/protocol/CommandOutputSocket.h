#pragma once

#include "protocol/CommandOutputStream.h"

namespace Merrow {

// Sends to the socket whose handle is in a variable that this class does not own: the variable is read at every send,
// and the socket is never closed here.
class CommandOutputSocket final : public CommandOutputStream
{
public:
    explicit CommandOutputSocket(const std::int32_t& socket) : socket_(&socket) {}

    std::int32_t sendRaw(const char* bytes, std::int32_t count) override;

private:
    const std::int32_t* socket_;
};

} // namespace Merrow
