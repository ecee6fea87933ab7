#include "client/CallFrame.h"
#include "client/ConfigOutput.h"
#include "client/DecryptedItems.h"
#include "client/RequestParameters.h"
#include "remote/RemotePayload.h"
#include "text/Conversion.h"

#include <cstring>

using namespace Client;
using Merrow::code;
using Merrow::tag;

namespace {

bool meansWrongCredentials(std::int32_t status)
{
    return status == TARN_STATUS_WRONG_PASSWORD || status == TARN_STATUS_ACCOUNT_DISABLED ||
           status == TARN_STATUS_SESSION_KEY_INVALID;
}

} // namespace

std::int32_t DecryptEnvelope(const char* password, const char* envelope, const WideChar* configFile,
                             const char* recipient, const char* sessionKey, char* configOut, std::uint8_t keepOpen,
                             WideChar* kuOut, WideChar* fromOut, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("Got socket: ", connectToDaemon());
        log("Starting RemoteEnvelopeDecrypter...");
        call.out.beginCommand(code("DE"));
        const std::string_view passwordText = Text::orEmpty(password);
        log(passwordText.empty() ? "Setting NULL password" : "Setting not NULL password");
        sendText(call.out, tag("ky"), passwordText);
        sendEnvelope(call.out, envelope);
        sendConfigFile(call.out, configFile);
        sendIfAny(call.out, tag("to"), "Setting recipient e-mail: ", Text::orEmpty(recipient));
        sendIfAny(call.out, tag("sk"), "Setting session key: ", Text::orEmpty(sessionKey));
        if (keepOpen != 0) {
            call.out.writeBoolParam(tag("po"), true);
        }
        call.out.endCommand();

        const auto payload = readReply<Merrow::RemotePayload>(call.in);
        if (!payload) {
            log("ERROR: Payload object is NULL");
            return;
        }
        call.result = payload->statusCode;
        log("Status code: ", payload->statusCode);
        log("Status message: ", meansWrongCredentials(call.result) ? "User entered an incorrect username or password"
                                                                   : payload->getStatusMessage());
        if (call.result == 0) {
            decryptedItems().replaceWith(*payload);
            getEnvelopeConfig(payload->getEc(), true, configOut);
            Text::utf8IntoWide(payload->getKu().c_str(), kuOut);
            Text::utf8IntoWide(payload->getFm().c_str(), fromOut);
        }
    });
}

std::uint32_t GetNextDecryptedItemInfo(std::uint32_t* nameSize, std::uint32_t* contentTypeLength,
                                       std::uint32_t* dataSize)
{
    const DecryptedItem* item = decryptedItems().next();
    if (item == nullptr) {
        *nameSize = 0;
        *dataSize = 0;
        return 0;
    }
    *nameSize = static_cast<std::uint32_t>(item->name.size());
    *contentTypeLength = static_cast<std::uint32_t>(item->contentType.size());
    *dataSize = static_cast<std::uint32_t>(item->data.size());
    return 1;
}

std::uint32_t GetNextDecryptedItem(std::uint32_t* flags, std::uint32_t* type, std::uint8_t* nameBuffer,
                                   char* contentTypeBuffer, std::uint8_t* dataBuffer)
{
    const DecryptedItem* item = decryptedItems().next();
    if (item == nullptr) {
        return 0;
    }
    *flags = item->flags;
    *type = item->type;
    item->name.copy(reinterpret_cast<char*>(nameBuffer), item->name.size());
    std::strcat(contentTypeBuffer, item->contentType.c_str());
    item->data.copy(reinterpret_cast<char*>(dataBuffer), item->data.size());
    decryptedItems().advance();
    return 1;
}
