#include "remote/RemoteLogin.h"

namespace Merrow {

void RemoteLoginResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    switch (parameter) {
    case tag("lk"):
        lkText = stream.readString(length);
        break;
    case tag("se"):
        se = stream.readLong();
        break;
    case tag("we"):
        we = stream.readInt();
        break;
    case tag("wd"):
        wd = stream.readInt();
        break;
    default:
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

RemoteLoginSession::RemoteLoginSession(CommandInputStream& stream)
{
    readResponse(code("LS"), stream);
}

void RemoteLoginSession::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (parameter == tag("sl")) {
        sessionMap = stream.readStringMap(length);
    } else {
        RemoteLoginResponse::readParameter(stream, parameter, length);
    }
}

RemoteSetInformationResponse::RemoteSetInformationResponse(CommandInputStream& stream)
{
    readResponse(code("SI"), stream);
}

} // namespace Merrow
