#include "client/CallFrame.h"
#include "client/ClientVersion.h"
#include "client/ConfigOutput.h"
#include "client/RequestParameters.h"
#include "remote/RemoteEnrollment.h"
#include "text/ConfigKeys.h"
#include "text/Conversion.h"
#include "text/EnvelopeConfig.h"

using namespace Client;
using Merrow::code;
using Merrow::tag;

namespace {

// What both requests open with: the client, the key server and the address.
void sendEnrollmentHead(Merrow::CommandOutputStream& out, const char* keyServer, const char* emailAddress)
{
    sendLogged(out, tag("tc"), "Setting FullClientName ", clientVersion());
    log("Setting keyServer ", keyServer);
    out.writeStringMapParam(tag("ec"),
                            {{std::string(Text::ConfigKey::externalSecureUrl), std::string(Text::orEmpty(keyServer))}});
    sendLogged(out, tag("ea"), "Setting emailAddress ", Text::orEmpty(emailAddress));
}

} // namespace

std::int32_t GetEnrollParameters(const char* emailAddress, const char* keyServer, const WideChar* locale,
                                 std::int32_t* samlUser, std::int32_t* isOneClickUser,
                                 std::int32_t* securityQuestionsNumber, std::int32_t* isSecurityQuestionsEditable,
                                 WideChar* localesOut, WideChar* securityQuestionsOut, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("GetEnrollParameters is called.");
        connectToDaemon();
        call.out.beginCommand(code("EP"));
        sendEnrollmentHead(call.out, keyServer, emailAddress);
        sendIfAny(call.out, tag("ul"), "Setting locale ", Text::wideToUtf8(locale));
        call.out.endCommand();

        const Merrow::RemoteEnrollParamsResponse parameters(call.in);
        call.result = parameters.statusCode;
        logStatus(parameters);
        *samlUser = parameters.su;
        log("Recieved samlUser: ", parameters.su);
        *isOneClickUser = parameters.ou;
        log("Recieved isOneClickUser: ", parameters.ou);
        *securityQuestionsNumber = parameters.qn;
        log("Recieved securityQuestionsNumber: ", parameters.qn);
        *isSecurityQuestionsEditable = parameters.qe;
        log("Recieved isSecurityQuestionsEditable: ", parameters.qe);
        Text::formatConfigMapWide(parameters.getSecondMap(), localesOut);
        Text::formatConfigMapWide(parameters.getThirdMap(), securityQuestionsOut);
    });
}

std::int32_t UserEnroll(const char* emailAddress, const char* keyServer, const WideChar* firstName,
                        const WideChar* lastName, const WideChar* password, const WideChar* locale,
                        const char* enrollUuid, const char* senderEmailAddress, std::int32_t isSimpleRegistration,
                        std::int32_t enrollmentStage, const WideChar* personalPassPhrase,
                        const WideChar* securityQuestion1, const WideChar* securityQuestion2,
                        const WideChar* securityQuestion3, const WideChar* securityAnswer1,
                        const WideChar* securityAnswer2, const WideChar* securityAnswer3, std::int32_t timeZone,
                        const char* timeFormat, char* resultOut, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("EnrollUser is called.");
        connectToDaemon();
        call.out.beginCommand(code("EU"));
        sendEnrollmentHead(call.out, keyServer, emailAddress);
        sendLogged(call.out, tag("fn"), "Setting first name ", Text::wideToUtf8(firstName));
        sendLogged(call.out, tag("ln"), "Setting last name ", Text::wideToUtf8(lastName));
        sendText(call.out, tag("pw"), Text::wideToUtf8(password));
        sendLogged(call.out, tag("pc"), "Setting enrollUuid ", Text::orEmpty(enrollUuid));
        sendLogged(call.out, tag("es"), "Setting senderEmailAddress ", Text::orEmpty(senderEmailAddress));
        sendIfAny(call.out, tag("ul"), "Setting locale ", Text::wideToUtf8(locale));
        sendLogged(call.out, tag("or"), "Setting isSimpleRegistration ", isSimpleRegistration);
        sendLogged(call.out, tag("el"), "Setting enrollmentStage ", enrollmentStage);
        sendLogged(call.out, tag("zo"), "Setting timeZone ", timeZone);
        if (const std::string passPhrase = Text::wideToUtf8(personalPassPhrase); !passPhrase.empty()) {
            log("Setting personalPassPhrase ");
            sendText(call.out, tag("pp"), passPhrase);
            call.out.writeIntParam(tag("pe"), 1);
        }

        StringMap questionsAndAnswers;
        const auto setQuestion = [&](const std::string& name, const WideChar* question) {
            const std::string text = Text::wideToUtf8(question);
            log("Setting " + name + " ", text);
            questionsAndAnswers[name] = text;
        };
        const auto setAnswer = [&](const std::string& name, const WideChar* answer) {
            log("Setting " + name + " ");
            questionsAndAnswers[name] = Text::wideToUtf8(answer);
        };
        setQuestion("securityQuestion1", securityQuestion1);
        setQuestion("securityQuestion2", securityQuestion2);
        setQuestion("securityQuestion3", securityQuestion3);
        setAnswer("securityAnswer1", securityAnswer1);
        setAnswer("securityAnswer2", securityAnswer2);
        setAnswer("securityAnswer3", securityAnswer3);
        call.out.writeStringMapParam(tag("qa"), std::move(questionsAndAnswers));
        log("Setting timeFormat ", timeFormat);
        call.out.endCommand();

        const Merrow::RemoteEnrollUserResponse response(call.in);
        call.result = response.statusCode;
        logStatus(response);
        getEnvelopeConfig(response.getFirstMap(), false, resultOut);
    });
}
