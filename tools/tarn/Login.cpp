#include "Command.h"
#include "Failure.h"
#include "Text.h"
#include <TarnRemoteClient.h>
#include <cstdlib>

namespace tarn {

namespace {

struct LoginOptions : AccessOptions
{
    std::string user;
};

void login(Context& context, const LoginOptions& options)
{
    try {
        context.client.login(options.user, options.access(options.user));
    } catch (const StatusError& error) {
        if (error.detail().empty()) {
            throw;
        }
        const bool wait = error.status() == TARN_STATUS_TOO_MANY_TRIES;
        throw refusal(error, describe(error) + (wait ? "; seconds to wait: " : "; see ") + error.detail(),
                      {{wait ? "secondsToWait" : "text",
                        wait ? nlohmann::json(std::atoi(error.detail().c_str())) : nlohmann::json(error.detail())}});
    }
    context.output.result("The login of " + printable(options.user) + " succeeded.\n", {{"user", options.user}});
}

void verify(Context& context, const LoginOptions& options)
{
    context.client.verifyConfig(options.user, options.configFile());
    context.output.result("The configuration of " + printable(options.user) + " is valid.\n",
                          {{"sender", options.user}});
}

} // namespace

void addLoginCommands(Parser& program, Context& context)
{
    auto [loginParser, loginOptions] = addCommand(program, context, "login", "Log a user in", login);
    loginParser.argument("USER", loginOptions.user, "The user's address");
    loginParser.access(loginOptions);

    auto [verifyParser, verifyOptions] =
        addCommand(program, context, "verify", "Check the configuration of a sender", verify);
    verifyParser.argument("SENDER", verifyOptions.user, "The sender's address");
    verifyParser.config(verifyOptions);
}

} // namespace tarn
