#include "client/CallFrame.h"
#include "client/RequestParameters.h"
#include "remote/RemoteConfiguration.h"
#include "remote/RemoteLocalizedText.h"
#include "text/Conversion.h"
#include "text/EnvelopeConfig.h"

using namespace Client;
using Merrow::code;
using Merrow::tag;

namespace {

// The 'LT' exchange, up to the reply's status.
Merrow::RemoteLocalizedText askForTexts(Call<std::int32_t>& call, const WideChar* configFile)
{
    connectToDaemon();
    call.out.beginCommand(code("LT"));
    sendConfigFile(call.out, configFile, "Setting envelope config file ");
    call.out.endCommand();
    Merrow::RemoteLocalizedText texts(call.in);
    call.result = texts.statusCode;
    logStatus(texts);
    return texts;
}

std::string textOf(const StringMap& texts, const std::string& locale)
{
    const auto entry = texts.find(locale);
    return entry == texts.end() ? std::string() : entry->second;
}

} // namespace

std::int32_t GetKeyServerInfo(const WideChar* configFile, std::uint8_t* readByEnabled,
                              std::uint8_t* expirationSupported, std::uint8_t* localizedTextEnabled, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("GetKeyServerInfo is called.");
        connectToDaemon();
        call.out.beginCommand(code("KV"));
        sendLogged(call.out, tag("ep"), "Setting envelope config file ", Text::wideToUtf8(configFile));
        call.out.endCommand();

        const Merrow::RemoteKeyserverVersion keyServer(call.in);
        call.result = keyServer.statusCode;
        logStatus(keyServer);
        if (call.result != 0) {
            return;
        }
        for (const auto& [key, value] : keyServer.getFirstMap()) {
            log(key, ": ", value);
            if (key == "feature.readByEnabled" && value == "true") {
                *readByEnabled = 1;
            } else if (key == "version") {
                *expirationSupported = 1;
            } else if (key == "feature.localizedText" && value == "true") {
                *localizedTextEnabled = 1;
            }
        }
        log("bReadByEnabled = ", *readByEnabled != 0 ? 1 : 0,
            "; bExpirationSupported = ", *expirationSupported != 0 ? 1 : 0);
    });
}

std::int32_t GetSupportedLocales(const WideChar* configFile, WideChar* localesOut, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("GetSupportedLocales is called.");
        const Merrow::RemoteLocalizedText texts = askForTexts(call, configFile);
        if (call.result == 0) {
            Text::formatConfigMapWide(texts.getFirstMap(), localesOut);
        }
    });
}

std::int32_t GetLocalizedMessageBody(const WideChar* configFile, const char* locale, char* textBodyOut,
                                     char* htmlBodyOut, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("GetLocalizedMessageBody is called.");
        const Merrow::RemoteLocalizedText texts = askForTexts(call, configFile);
        if (call.result == 0) {
            const std::string_view asked = Text::orEmpty(locale);
            const std::string wanted(asked.empty() ? "en" : asked);
            Text::copyOut(textOf(texts.getThirdMap(), wanted), textBodyOut);
            Text::copyOut(textOf(texts.getSecondMap(), wanted), htmlBodyOut);
        }
    });
}
