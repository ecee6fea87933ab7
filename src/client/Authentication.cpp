#include "client/CallFrame.h"
#include "client/Login.h"
#include "client/RequestParameters.h"
#include "remote/RemoteConfiguration.h"
#include "text/Conversion.h"

using namespace Client;
using Merrow::code;
using Merrow::tag;

namespace {

// The field of a login reply that belongs to its status.
std::string loginResult(const Merrow::RemoteLoginSession& session)
{
    switch (session.statusCode) {
    case TARN_STATUS_ENROLLMENT_UNFINISHED:
        return session.getText();
    case TARN_STATUS_TOO_MANY_TRIES:
        return std::to_string(session.se);
    default:
        return {};
    }
}

} // namespace

std::int32_t AuthenticateUser(const char* emailAddress, const char* password, const WideChar* configFile, char* result,
                              char* logBuffer)
{
    constexpr Frame<std::int32_t> frame{
        .initial = -1, .failureLabel = "Unknown exception occured, setting status to -1. GetLastError() : "};
    return runCall(frame, logBuffer, [&](auto& call) {
        log("Got socket: ", connectToDaemon());
        const auto& session = exchangeLogin(call.out, call.in, emailAddress, password, configFile);
        call.result = session.statusCode;
        Text::copyOut(loginResult(session), result);
        log("Status code: ", session.statusCode);
        log("Status message: \n", session.getStatusMessage());
    });
}

std::int32_t VerifyLarchConfig(const char* sender, const WideChar* configFile, char* logBuffer)
{
    return runCall<std::int32_t>({.initial = 0, .onFailure = -1}, logBuffer, [&](auto& call) {
        log("Got socket: ", connectToDaemon());
        log("Starting RemoteVerifyConfiguration...");
        call.out.beginCommand(code("VC"));
        sendConfigFile(call.out, configFile);
        sendLogged(call.out, tag("fm"), "Setting sender field: ", Text::orEmpty(sender));
        call.out.endCommand();
        const auto verification = readReply<Merrow::RemoteVerifyConfigurationResponse>(call.in);
        if (!verification) {
            // Reported as success, unlike every other failure.
            log("RemoteResponse object is null. Operation failed.");
            return;
        }
        call.result = verification->statusCode;
        log("Status code: ", verification->statusCode);
        log("Status message:\n", verification->getStatusMessage());
    });
}
