#include "remote/RemoteResponse.h"

namespace Merrow {

void RemoteResponse::readResponse(std::uint16_t expectedCode, CommandInputStream& stream)
{
    const std::uint16_t code = stream.beginReply();
    if (code != expectedCode) {
        stream.fail("Invalid command code: " + std::to_string(code));
    }
    for (Tag tag = stream.readTag(); tag != endMarker; tag = stream.readTag()) {
        const std::int32_t length = stream.readLength();
        readParameter(stream, tag, length);
    }
    stream.endReply();
}

void RemoteResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, *this)) {
        stream.fail("Unknown parameter: " + std::to_string(parameter));
    }
}

} // namespace Merrow
