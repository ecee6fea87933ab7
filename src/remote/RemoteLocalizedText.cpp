#include "remote/RemoteLocalizedText.h"

#include "remote/Fields.h"

namespace Merrow {

void RemoteLocalizedText::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (!readField(stream, parameter, length, Tagged{tag("sl"), sl}, Tagged{tag("th"), th}, Tagged{tag("tb"), tb})) {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
