#include "client/RequestParameters.h"

#include "client/ClientVersion.h"
#include "text/Conversion.h"

#include <stdexcept>

namespace Client {

using Merrow::tag;

void sendText(Merrow::CommandOutputStream& out, Merrow::Tag parameter, std::string_view text)
{
    if (text.size() > INT32_MAX) {
        throw std::length_error("string too long");
    }
    out.writeBytesParam(parameter, text.data(), static_cast<std::int32_t>(text.size()));
}

void sendLogged(Merrow::CommandOutputStream& out, Merrow::Tag parameter, LogLabel label, std::string_view text)
{
    log(label, text);
    sendText(out, parameter, text);
}

void sendLogged(Merrow::CommandOutputStream& out, Merrow::Tag parameter, LogLabel label, std::int32_t number)
{
    log(label, number);
    out.writeIntParam(parameter, number);
}

void sendIfAny(Merrow::CommandOutputStream& out, Merrow::Tag parameter, LogLabel label, std::string_view text)
{
    if (!text.empty()) {
        sendLogged(out, parameter, label, text);
    }
}

void sendIfAnyUnlogged(Merrow::CommandOutputStream& out, Merrow::Tag parameter, LogLabel label, std::string_view text)
{
    if (!text.empty()) {
        log(label);
        sendText(out, parameter, text);
    }
}

void sendClientVersion(Merrow::CommandOutputStream& out)
{
    sendText(out, tag("tc"), clientVersion());
}

void sendEnvelope(Merrow::CommandOutputStream& out, const char* envelope)
{
    if (const std::string_view text = Text::orEmpty(envelope); !text.empty()) {
        log("Setting envelope, size: ", text.size());
        sendText(out, tag("en"), text);
    }
}

void sendConfigFile(Merrow::CommandOutputStream& out, const WideChar* configFile, LogLabel label)
{
    sendIfAny(out, tag("ep"), label, Text::wideToUtf8(configFile));
}

void logStatus(const Merrow::RemoteResponse& reply)
{
    log("Status code: ", reply.statusCode);
    log("Status message: ", reply.getStatusMessage());
}

} // namespace Client
