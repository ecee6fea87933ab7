#include "client/CallFrame.h"
#include "client/RequestParameters.h"
#include "remote/RemotePayload.h"
#include "text/Conversion.h"
#include "text/Lists.h"

using namespace Client;
using Merrow::code;
using Merrow::tag;

namespace {

constexpr std::int32_t unknownSensitivity = -1;

struct EnrollmentOutput
{
    char* id;
    char* from;
};

// The text that a recipient's status comes with; none when the status is not one of those that an envelope waiting to
// be opened can have.
std::optional<std::string> statusText(const Merrow::RemotePayload& payload, const EnrollmentOutput& enrollment)
{
    switch (payload.statusCode) {
    case TARN_STATUS_NOT_ENROLLED:
    case TARN_STATUS_ENROLLMENT_UNFINISHED:
        Text::copyOut(payload.getUu(), enrollment.id);
        log("Returned EnrollUUID: ", payload.getUu());
        Text::copyOut(payload.getFm(), enrollment.from);
        return payload.getText();
    case TARN_STATUS_LOCKED_WITH_MESSAGE:
        return payload.getStatusMessage();
    case TARN_STATUS_TOO_MANY_TRIES:
        return std::to_string(payload.se);
    case TARN_STATUS_PASSWORD_NEEDED:
    case TARN_STATUS_SESSION_KEY_ALIVE:
    case TARN_STATUS_ASKED_BY_SENDER:
    case TARN_STATUS_NOT_A_RECIPIENT:
    case TARN_STATUS_UNKNOWN_ENVELOPE:
    case TARN_STATUS_ACCOUNT_DISABLED:
    case TARN_STATUS_EXPIRED:
    case TARN_STATUS_LOCKED:
    case TARN_STATUS_DAMAGED_ENVELOPE:
    case TARN_STATUS_NO_ENVELOPE:
        return std::string();
    default:
        log("ERROR. Undefined status code. Message cannot be decrypted.");
        return std::nullopt;
    }
}

} // namespace

std::int32_t GetPayloadStatus(const char* envelope, const WideChar* configFile, const char* recipientList,
                              WideChar* statusTextsOut, char* enrollIdOut, char* fromOut, char* statusCodesOut,
                              std::int32_t* sensitivity)
{
    *sensitivity = unknownSensitivity;
    return runCall(statusFrame, nullptr, [&](auto& call) {
        call.copiesLog = false;
        log("Got socket: ", connectToDaemon());
        Text::JoinedList texts(Text::listDelimiter);
        Text::JoinedList codes(";");
        for (const std::string& recipient : Text::splitAny(Text::orEmpty(recipientList), ";")) {
            log("Starting RemoteEnvelopeDecrypter...");
            call.out.beginCommand(code("DE"));
            sendEnvelope(call.out, envelope);
            sendConfigFile(call.out, configFile, "Setting envelope config file ");
            sendIfAny(call.out, tag("to"), "Setting recipient e-mail: ", recipient);
            call.out.endCommand();

            const auto payload = readReply<Merrow::RemotePayload>(call.in);
            if (!payload) {
                log("Error. Payload object is null. Operation failed");
                break;
            }
            call.result = payload->statusCode;
            logStatus(*payload);
            const std::optional<std::string> text = statusText(*payload, {enrollIdOut, fromOut});
            texts.append(text.value_or(""));
            codes.append(std::to_string(payload->statusCode));
            if (*sensitivity == unknownSensitivity) {
                *sensitivity = payload->ms;
                log("Message sensitivity: ", payload->ms);
            }
            if (!text) {
                break;
            }
        }
        Text::utf8IntoWide(texts.text().c_str(), statusTextsOut);
        Text::copyOut(codes.text(), statusCodesOut);
    });
}

std::int32_t GetRecipients(const char* envelope, WideChar* recipientsOut, std::uint32_t* sensitivityOut,
                           char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("Got socket: ", connectToDaemon());
        log("Starting RemoteEnvelopeDecrypter...");
        call.out.beginCommand(code("DE"));
        sendEnvelope(call.out, envelope);
        call.out.writeBoolParam(tag("po"), true);
        call.out.endCommand();

        const auto payload = readReply<Merrow::RemotePayload>(call.in);
        if (!payload) {
            return;
        }
        call.result = payload->statusCode;
        std::string recipients;
        for (const auto* list : {&payload->getTr(), &payload->getTc()}) {
            for (const std::string& recipient : *list) {
                recipients.append(recipient).append(";");
            }
        }
        Text::utf8IntoWide(recipients.c_str(), recipientsOut);
        *sensitivityOut = static_cast<std::uint32_t>(payload->ms);
        log("Message sensitivity: ", payload->ms);
    });
}
