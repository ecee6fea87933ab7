#include <TarnRemoteClient.h>
#include <tarn/Client.h>

#include "OperationLog.h"
#include "OutputBuffer.h"
#include "Text.h"
#include <algorithm>

namespace tarn {

using namespace detail;

namespace {

// The library has one connection for the process.
enum class Connection { unknown, open, outOfStep };
Connection connection = Connection::unknown;

std::string describe(const std::string& function, std::int32_t status, const std::string& message)
{
    const std::string text = function + " was answered with status " + std::to_string(status);
    return message.empty() ? text : text + ": " + message;
}

} // namespace

StatusError::StatusError(const std::string& function, std::int32_t status, const std::string& log, std::string detail)
    : Error(describe(function, status, statusMessage(log)), function, log), status_(status),
      message_(statusMessage(log)), detail_(std::move(detail))
{
}

// The call alone; what its status means is not looked at.
std::int32_t Client::attempt(const char* function, const LogLoad& load, const NativeCall& call)
{
    load.check(function);
    if (connection == Connection::outOfStep) {
        throw OutOfStep(std::string(function) + " was not called: an exchange with the daemon broke down earlier in " +
                            "this process, and the connection is out of step",
                        function, "");
    }
    lastLog_.clear();
    std::vector<char> log(TARN_LOG_SIZE);
    std::int32_t status = TARN_STATUS_NONE;
    const auto run = [&] {
        status = call(log.data());
        lastLog_ = log.data();
    };
    if (around_) {
        around_(function, run);
    } else {
        run();
    }
    return status;
}

// `outputs` are the texts that the function writes with status 0.
void Client::run(const char* function, const LogLoad& load, Outputs outputs, const NativeCall& call)
{
    const std::int32_t status = attempt(function, load, call);
    if (!answered(status, outputs)) {
        failExchange(function);
    }
    connection = Connection::open;
    if (status != TARN_STATUS_OK) {
        throw StatusError(function, status, lastLog_);
    }
}

// The end of the log does not tell a failure, since a text of the daemon's can look like it. A status other than 0 and
// -1 comes from a reply alone. With these two, what the library writes before any such text tells that there was a
// reply.
bool Client::answered(std::int32_t status, Outputs outputs) const
{
    const auto written = [](const OutputBuffer* output) { return output->written(); };
    if (status == TARN_STATUS_OK && outputs.size() > 0) {
        return std::all_of(outputs.begin(), outputs.end(), written);
    }
    if (status == TARN_STATUS_OK || status == TARN_STATUS_NONE) {
        // A refused login within an encryption leaves no log.
        return lastLog_.empty() || tellsStatus(lastLog_, status) ||
               std::any_of(outputs.begin(), outputs.end(), written);
    }
    return true;
}

void Client::failExchange(const char* function) const
{
    if (connection == Connection::unknown && tellsNoConnection(function, lastLog_)) {
        throw NoDaemon("no daemon listens on port 53007 of this machine", function, lastLog_);
    }
    connection = Connection::outOfStep;
    throw ExchangeError("the exchange with the daemon broke down in " + std::string(function) +
                            ": what answers on its port does not keep to the protocol, or the connection was lost",
                        function, lastLog_);
}

void Client::refuseAnswer(const char* function, const std::string& what) const
{
    throw MalformedAnswer("the answer to " + std::string(function) + " contradicts itself: " + what, function,
                          lastLog_);
}

std::int32_t Client::startDaemon(const std::string& jarPath)
{
    bool accepted = false;
    attempt("StartTarnDaemon", {jarPath}, [&](char* log) {
        accepted = StartTarnDaemon(Narrow(jarPath), log) != 0;
        return TARN_STATUS_OK;
    });
    const std::int32_t answer = numberAfter(lastLog_, "ShellExecute returned: ");
    if (!accepted) {
        throw StatusError("StartTarnDaemon", answer, lastLog_);
    }
    return answer;
}

void Client::stopDaemon()
{
    // Whatever the daemon answers, the library then closes the connection.
    const auto stop = [](char* log) { return StopTarnDaemon(log) != 0 ? 0 : numberAfter(log, "Status code: "); };
    try {
        run("StopTarnDaemon", {}, {}, stop);
    } catch (const StatusError&) {
        connection = Connection::unknown;
        throw;
    }
    connection = Connection::unknown;
}

std::string Client::version()
{
    OutputText<char> version(room::value);
    run("GetTarnVersion", {}, {&version}, [&](char* log) { return GetTarnVersion(version, log); });
    return version.text();
}

void Client::login(const std::string& user, const Access& access)
{
    OutputText<char> result(room::value);
    try {
        run("AuthenticateUser", {user, access.configFile}, {&result}, [&](char* log) {
            return AuthenticateUser(Narrow(user), Narrow(access.password), Wide(access.configFile), result, log);
        });
    } catch (const StatusError& error) {
        throw StatusError(error.function(), error.status(), error.log(), result.text());
    }
}

void Client::verifyConfig(const std::string& sender, const std::string& configFile)
{
    run("VerifyLarchConfig", {sender, configFile}, {},
        [&](char* log) { return VerifyLarchConfig(Narrow(sender), Wide(configFile), log); });
}

KeyServerFeatures Client::features(const std::string& configFile)
{
    std::uint8_t readBy = 0;
    std::uint8_t expiration = 0;
    std::uint8_t localized = 0;
    run("GetKeyServerInfo", {configFile}, {},
        [&](char* log) { return GetKeyServerInfo(Wide(configFile), &readBy, &expiration, &localized, log); });
    return {readBy != 0, expiration != 0, localized != 0};
}

std::vector<KeyValue> Client::locales(const std::string& configFile)
{
    OutputText<TarnWideChar> list(room::text);
    run("GetSupportedLocales", {configFile}, {&list},
        [&](char* log) { return GetSupportedLocales(Wide(configFile), list, log); });
    return parseMapText(list.text());
}

MessageBody Client::messageBody(const std::string& locale, const std::string& configFile)
{
    OutputText<char> text(room::text);
    OutputText<char> html(room::text);
    run("GetLocalizedMessageBody", {configFile, locale}, {&text, &html},
        [&](char* log) { return GetLocalizedMessageBody(Wide(configFile), Narrow(locale), text, html, log); });
    return {text.text(), html.text()};
}

} // namespace tarn
