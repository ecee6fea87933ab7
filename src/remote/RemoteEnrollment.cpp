#include "remote/RemoteEnrollment.h"

namespace Merrow {

RemoteEnrollParamsResponse::RemoteEnrollParamsResponse(CommandInputStream& stream)
{
    readResponse(code("EP"), stream);
}

void RemoteEnrollParamsResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    switch (parameter) {
    case tag("su"):
        su = stream.readInt();
        break;
    case tag("ou"):
        ou = stream.readInt();
        break;
    case tag("qn"):
        qn = stream.readInt();
        break;
    case tag("qe"):
        qe = stream.readInt();
        break;
    case tag("al"):
        al = stream.readStringMap(length);
        break;
    case tag("sq"):
        sq = stream.readStringMap(length);
        break;
    default:
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

RemoteEnrollUserResponse::RemoteEnrollUserResponse(CommandInputStream& stream)
{
    readResponse(code("EU"), stream);
}

void RemoteEnrollUserResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    switch (parameter) {
    case tag("ve"):
        ve = stream.readStringMap(length);
        break;
    case tag("el"):
        el = stream.readInt();
        break;
    default:
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
