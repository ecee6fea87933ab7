#include "remote/RemoteStatus.h"

namespace Merrow {

RemoteStopStatus::RemoteStopStatus(CommandInputStream& stream)
{
    readResponse(code("SD"), stream);
}

RemoteDaemonStatus::RemoteDaemonStatus(CommandInputStream& stream)
{
    readResponse(code("ST"), stream);
}

void RemoteDaemonStatus::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    switch (parameter) {
    case tag("v "):
        version = stream.readString(length);
        break;
    case tag("bn"):
        build = stream.readInt();
        break;
    case tag("bt"):
        bt = stream.readLong();
        break;
    case tag("ct"):
        ct = stream.readInt();
        break;
    case tag("ca"):
        ca = stream.readInt();
        break;
    case tag("mf"):
        freeMemory = stream.readLong();
        break;
    case tag("mt"):
        totalMemory = stream.readLong();
        break;
    case tag("mm"):
        maxMemory = stream.readLong();
        break;
    case tag("bs"):
        bs = stream.readLong();
        break;
    case tag("bf"):
        bf = stream.readLong();
        break;
    case tag("ss"):
        ss = stream.readLong();
        break;
    case tag("sa"):
        sa = stream.readDouble();
        break;
    case tag("sd"):
        sd = stream.readDouble();
        break;
    case tag("es"):
        es = stream.readLong();
        break;
    case tag("ea"):
        ea = stream.readDouble();
        break;
    case tag("ed"):
        ed = stream.readDouble();
        break;
    default:
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
