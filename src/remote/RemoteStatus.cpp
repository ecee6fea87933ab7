#include "remote/RemoteStatus.h"

#include "remote/Fields.h"

namespace Merrow {

void RemoteDaemonStatus::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, Tagged{tag("v "), version}, Tagged{tag("bn"), build},
                   Tagged{tag("bt"), bt}, Tagged{tag("ct"), ct}, Tagged{tag("ca"), ca}, Tagged{tag("mf"), freeMemory},
                   Tagged{tag("mt"), totalMemory}, Tagged{tag("mm"), maxMemory}, Tagged{tag("bs"), bs},
                   Tagged{tag("bf"), bf}, Tagged{tag("ss"), ss}, Tagged{tag("sa"), sa}, Tagged{tag("sd"), sd},
                   Tagged{tag("es"), es}, Tagged{tag("ea"), ea}, Tagged{tag("ed"), ed})) {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
