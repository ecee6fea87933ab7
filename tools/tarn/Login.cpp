#include "Command.h"
#include "Files.h"
#include "Secrets.h"

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
    context.library.login(options.user, {password(options.passwordFile, options.user), absolutePath(options.config)});
    context.output.result("The login of " + options.user + " succeeded.\n", {{"user", options.user}});
}

void verify(Context& context, const LoginOptions& options)
{
    context.library.verify(options.user, absolutePath(options.config));
    context.output.result("The configuration of " + options.user + " is valid.\n", {{"sender", options.user}});
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
