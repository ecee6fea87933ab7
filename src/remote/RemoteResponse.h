#pragma once

#include "protocol/Codes.h"
#include "protocol/CommandInputStream.h"
#include "remote/Fields.h"

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
    std::string codeText;
    std::int16_t statusCode = -1;
    std::string statusMessage;

    const std::string& getStatusMessage() const { return statusMessage; }

    bool anyField(auto visit)
    {
        return visit(tag("cd"), codeText) || visit(tag("em"), statusMessage) || visit(tag("st"), statusCode);
    }

protected:
    RemoteResponse() = default;
    ~RemoteResponse() = default;

    void readResponse(std::uint16_t expectedCode, CommandInputStream& stream);

    // Reads the value of one parameter. A derived class handles its own tags and passes all others on, so that an
    // unknown tag ends here, and ends the reply.
    virtual void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length);
};

// The base of a reply class that has fields of its own, which it lists in `anyField`.
template <class Reply, class Base = RemoteResponse>
class WithFields : public Base
{
public:
    using Inherited = Base;

protected:
    WithFields() = default;
    ~WithFields() = default;

    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override
    {
        if (!readField(stream, parameter, length, static_cast<Reply&>(*this))) {
            Base::readParameter(stream, parameter, length);
        }
    }
};

} // namespace Merrow
