#include "client/CallFrame.h"
#include "client/ClientVersion.h"
#include "client/Login.h"
#include "client/RequestParameters.h"
#include "remote/RemoteEnvelope.h"
#include "text/Conversion.h"
#include "text/EnvelopeConfig.h"
#include "text/Lists.h"

using namespace Client;
using Merrow::code;
using Merrow::tag;

namespace {

void sendRecipients(Merrow::CommandOutputStream& out, Merrow::Tag parameter, const char* list, const char* label)
{
    for (const std::string& recipient : Text::splitAny(Text::orEmpty(list), ";")) {
        sendLogged(out, parameter, label, recipient);
    }
}

} // namespace

std::int32_t EncryptEnvelopeOnline(const char* toList, const char* ccList, const char* bccList, const char* from,
                                   const char* password, const char* mimeMessage, const WideChar* configFile,
                                   WideChar* envelopeOut, WideChar* textBodyOut, WideChar* htmlBodyOut,
                                   WideChar* attachmentNameOut, const char* encodedEnvelopeConfig,
                                   const char* loginFlag, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("Got socket: ", connectToDaemon());
        const std::string_view encodedConfig = Text::orEmpty(encodedEnvelopeConfig);
        StringMap config = Text::decodeConfigMap(encodedConfig);

        const Merrow::RemoteLoginSession* session = nullptr;
        if (encodedConfig.empty() && Text::orEmpty(loginFlag) != "0") {
            session = &exchangeLogin(call.out, call.in, from, password, configFile);
            call.result = session->statusCode;
            log("Authentication status: ", session->statusCode);
            log("Authentication message: \n", session->getStatusMessage());
            if (call.result != 0) {
                call.copiesLog = false;
                return;
            }
        }

        log("Starting builder");
        call.out.beginCommand(code("BE"));
        sendLogged(call.out, tag("tc"), "Setting client type to: ", clientVersion());
        if (session != nullptr) {
            log("Setting login session.");
            call.out.writeStringMapParam(tag("sl"), session->getSessionMap());
        }
        sendLogged(call.out, tag("fm"), "Setting From field: ", Text::orEmpty(from));
        sendRecipients(call.out, tag("to"), toList, "Setting To recipient: ");
        sendRecipients(call.out, tag("cc"), ccList, "Setting CC recipient: ");
        sendRecipients(call.out, tag("bc"), bccList, "Setting BCC recipient: ");
        if (!encodedConfig.empty()) {
            call.out.writeStringMapParam(tag("ec"), std::move(config));
        }
        sendConfigFile(call.out, configFile);
        const std::string_view message = Text::orEmpty(mimeMessage);
        log("Setting mime message, size:\n", message.size());
        sendText(call.out, tag("mm"), message);
        log("Building the envelope...");
        call.out.endCommand();

        const auto envelope = readReply<Merrow::RemoteEnvelope>(call.in);
        if (!envelope) {
            log("Error. Evnelope object is NULL. Operation failed.");
            return;
        }
        call.result = envelope->statusCode;
        log("Status code: ", envelope->statusCode);
        log("Status message:\n", envelope->getStatusMessage());
        if (call.result == 0) {
            Text::utf8IntoWide(envelope->en.c_str(), envelopeOut);
            Text::utf8IntoWide(envelope->getTb().c_str(), textBodyOut);
            Text::utf8IntoWide(envelope->getTh().c_str(), htmlBodyOut);
            Text::utf8IntoWide(envelope->getAn().c_str(), attachmentNameOut);
        }
    });
}
