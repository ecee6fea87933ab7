#include "remote/RemoteEnrollment.h"

#include "remote/Fields.h"

namespace Merrow {

void RemoteEnrollParamsResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, Tagged{tag("su"), su}, Tagged{tag("ou"), ou}, Tagged{tag("qn"), qn},
                   Tagged{tag("qe"), qe}, Tagged{tag("al"), al}, Tagged{tag("sq"), sq})) {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

void RemoteEnrollUserResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, Tagged{tag("ve"), ve}, Tagged{tag("el"), el})) {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
