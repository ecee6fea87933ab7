#pragma once

#include "protocol/CommandInputStream.h"

namespace Merrow {

// Receives from the socket whose handle is in a variable that this class does not own, as CommandOutputSocket sends.
class CommandInputSocket final : public CommandInputStream
{
public:
    explicit CommandInputSocket(const std::int32_t& socket) : socket_(&socket) {}

    std::int32_t receiveRaw(char* buffer, std::int32_t count) override;

private:
    const std::int32_t* socket_;
};

} // namespace Merrow
