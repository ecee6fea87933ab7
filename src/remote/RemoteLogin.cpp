#include "remote/RemoteLogin.h"

#include "remote/Fields.h"

namespace Merrow {

void RemoteLoginResponse::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, Tagged{tag("lk"), lkText}, Tagged{tag("se"), se}, Tagged{tag("we"), we},
                   Tagged{tag("wd"), wd})) {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

void RemoteLoginSession::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, Tagged{tag("sl"), sessionMap})) {
        RemoteLoginResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
