#pragma once

#include "protocol/Codes.h"
#include "protocol/CommandInputStream.h"

#include <cstdint>
#include <string>

namespace Merrow {

// The base of all replies: the operation's status, and the loop that reads a reply. A concrete class reads its whole
// reply in its constructor; when that throws, there is no object.
//
// There is no virtual destructor: a reply is owned through its concrete type.
class RemoteResponse
{
public:
    std::string codeText;         // 'cd'
    std::int16_t statusCode = -1; // 'st'
    std::string statusMessage;    // 'em'

    const std::string& getStatusMessage() const { return statusMessage; }

protected:
    RemoteResponse() = default;
    ~RemoteResponse() = default;

    void readResponse(std::uint16_t expectedCode, CommandInputStream& stream);

    // Reads the value of one parameter. A derived class handles its own tags and passes all others on, so that an
    // unknown tag ends here, and ends the reply.
    virtual void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length);
};

} // namespace Merrow
