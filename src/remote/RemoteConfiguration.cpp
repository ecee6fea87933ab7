#include "remote/RemoteConfiguration.h"

namespace Merrow {

RemoteVerifyConfigurationResponse::RemoteVerifyConfigurationResponse(CommandInputStream& stream)
{
    readResponse(code("VC"), stream);
}

void RemoteVerifyConfigurationResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (parameter == tag("ec")) {
        configErrors = stream.readStringMap(length);
    } else {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

RemoteKeyserverVersion::RemoteKeyserverVersion(CommandInputStream& stream)
{
    readResponse(code("KV"), stream);
}

void RemoteKeyserverVersion::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (parameter == tag("kd")) {
        keyserverData = stream.readStringMap(length);
    } else {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
