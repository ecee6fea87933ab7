#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Secrets.h"
#include "Text.h"
#include <TarnRemoteClient.h>

namespace tarn {

namespace {

struct LoginOptions
{
    std::string user;
    std::string config;
    std::string passwordFile;
};

void login(Context& context, const LoginOptions& options)
{
    const Access access{password(options.passwordFile, options.user), absolutePath(options.config)};
    try {
        context.client.login(options.user, access);
    } catch (const StatusError& error) {
        if (error.detail().empty()) {
            throw;
        }
        const bool wait = error.status() == TARN_STATUS_TOO_MANY_TRIES;
        throw refusal(error, describe(error) + (wait ? "; to be tried again in seconds: " : "; see ") + error.detail(),
                      {{wait ? "secondsToWait" : "text",
                        wait ? nlohmann::json(std::atoi(error.detail().c_str())) : nlohmann::json(error.detail())}});
    }
    context.output.result("The login of " + printable(options.user) + " succeeded.\n", {{"user", options.user}});
}

void verify(Context& context, const LoginOptions& options)
{
    context.client.verifyConfig(options.user, absolutePath(options.config));
    context.output.result("The configuration of " + printable(options.user) + " is valid.\n",
                          {{"sender", options.user}});
}

} // namespace

void addLoginCommands(CLI::App& app, Context& context)
{
    const auto loginOptions = std::make_shared<LoginOptions>();
    auto* loginCommand = app.add_subcommand("login", "Log a user in");
    loginCommand->add_option("USER", loginOptions->user, "The user's address")->required();
    addPasswordOption(loginCommand, loginOptions->passwordFile);
    addConfigOption(loginCommand, loginOptions->config);
    onRun(loginCommand, context, loginOptions, login);

    const auto verifyOptions = std::make_shared<LoginOptions>();
    auto* verifyCommand = app.add_subcommand("verify", "Check the configuration of a sender");
    verifyCommand->add_option("SENDER", verifyOptions->user, "The sender's address")->required();
    addConfigOption(verifyCommand, verifyOptions->config);
    onRun(verifyCommand, context, verifyOptions, verify);
}

} // namespace tarn
