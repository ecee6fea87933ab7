#include "JavaPath.h"
#include "client/CallFrame.h"
#include "client/ClientVersion.h"
#include "client/RequestParameters.h"
#include "remote/RemoteStatus.h"
#include "text/Conversion.h"

using namespace Client;
using Merrow::code;

std::uint8_t StartTarnDaemon(const char* jarDaemon, char* logBuffer)
{
    return runCall<std::uint8_t>({.initial = 0}, logBuffer, [&](auto& call) {
        log("Starting Tarn daemon, jarDaemon: ", jarDaemon);
        // The path is not quoted: one with blanks reaches Java in pieces.
        const std::string parameters = "-jar " + std::string(Text::orEmpty(jarDaemon));
        const std::int32_t answer = Platform::launchHidden(javaPath, parameters.c_str());
        log("ShellExecute returned: ", answer);
        call.result = answer > 32;
    });
}

std::uint8_t StopTarnDaemon(char* logBuffer)
{
    return runCall<std::uint8_t>({.initial = 0}, logBuffer, [&](auto& call) {
        log("Got socket: ", connectToDaemon());
        log("Starting RemoteStopDaemon...");
        call.out.beginCommand(code("SD"));
        log("Executing daemon stop command...");
        call.out.endCommand();
        if (const auto status = readReply<Merrow::RemoteStopStatus>(call.in)) {
            log("Status code: ", status->statusCode);
            log("Status message: \n", status->getStatusMessage());
            call.result = status->statusCode == 0;
        } else {
            log("Error. Status object is NULL. Operation failed");
        }
        closeConnection();
    });
}

std::int32_t GetTarnVersion(char* version, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        clientVersion() = buildClientVersion();
        log("Got socket: ", connectToDaemon());
        log("Starting RemoteGetStatus...");
        call.out.beginCommand(code("ST"));
        call.out.endCommand();
        const auto status = readReply<Merrow::RemoteDaemonStatus>(call.in);
        if (!status) {
            log("Error. Status object is NULL. Operation failed.");
            return;
        }
        call.result = status->statusCode;
        logStatus(*status);
        if (call.result != 0) {
            return;
        }
        log("Version: ", status->getText());
        Text::copyOut(status->getText() + "-" + std::to_string(status->build), version);
        log("Build: ", status->build);
        // Figures of 2 GiB and more wrap: the log shows their low 32 bits.
        log("Max memory: ", static_cast<std::int32_t>(status->maxMemory));
        log("Total memory: ", static_cast<std::int32_t>(status->totalMemory));
        log("Free memory: ", static_cast<std::int32_t>(status->freeMemory));
    });
}
