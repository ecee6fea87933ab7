#include "remote/RemoteLocalizedText.h"

namespace Merrow {

RemoteLocalizedText::RemoteLocalizedText(CommandInputStream& stream)
{
    readResponse(code("LT"), stream);
}

void RemoteLocalizedText::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    switch (parameter) {
    case tag("sl"):
        sl = stream.readStringMap(length);
        break;
    case tag("th"):
        th = stream.readStringMap(length);
        break;
    case tag("tb"):
        tb = stream.readStringMap(length);
        break;
    default:
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
