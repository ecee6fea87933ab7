#include "client/RequestParameters.h"

#include "client/ClientVersion.h"
#include "text/Conversion.h"

namespace Client {

using Merrow::tag;

void sendText(Merrow::CommandOutputStream& out, Merrow::Tag parameter, std::string_view text)
{
    out.writeBytesParam(parameter, text.data(), static_cast<std::int32_t>(text.size()));
}

void sendClientVersion(Merrow::CommandOutputStream& out)
{
    sendText(out, tag("tc"), clientVersion());
}

void sendSecret(Merrow::CommandOutputStream& out, Merrow::Tag parameter, const char* text, LogLabel label)
{
    if (const std::string_view secret = Text::orEmpty(text); !secret.empty()) {
        log(label);
        sendText(out, parameter, secret);
    }
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
    if (const std::string path = Text::wideToUtf8(configFile); !path.empty()) {
        log(label, path);
        sendText(out, tag("ep"), path);
    }
}

void logStatus(const Merrow::RemoteResponse& reply)
{
    log("Status code: ", reply.statusCode);
    log("Status message: ", reply.getStatusMessage());
}

} // namespace Client
