#include "remote/RemoteConfiguration.h"

#include "remote/Fields.h"

namespace Merrow {

void RemoteVerifyConfigurationResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, Tagged{tag("ec"), configErrors})) {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

void RemoteKeyserverVersion::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, Tagged{tag("kd"), keyserverData})) {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
