#include "Command.h"
#include "Failure.h"
#include "Host.h"
#include "Interrupt.h"
#include <stdexcept>

namespace tarn {

namespace {

const char* const description = "Command-line client of the secure-mail daemon";
const char* const footer = R"(
Exit codes:
  0    done: the daemon answered with status 0
  1    the daemon answered with another status, or has not what was asked for
  2    usage: an argument or an input is wrong, or a secret is missing
  3    no daemon listens
  4    a file cannot be read or written
  5    the exchange with the daemon broke down
  130  interrupted

"tarn COMMAND --help" tells a command's options.)";

std::unique_ptr<CLI::App> makeApp(Context& context)
{
    auto app = std::make_unique<CLI::App>(description, "tarn");
    app->footer(footer);
    app->require_subcommand(1);
    app->fallthrough(); // the options of all commands may also follow the command
    app->set_version_flag("--version", TARN_VERSION);
    app->add_flag("--json", context.output.asJson, "Print the result as a JSON object");
    app->add_flag("--log", context.showLog, "Print the operation log on standard error");
    addLifecycleCommands(*app, context);
    addLoginCommands(*app, context);
    addEncryptCommand(*app, context);
    addDecryptCommand(*app, context);
    addStatusCommands(*app, context);
    addTrackingCommands(*app, context);
    addSettingCommands(*app, context);
    addKeyServerCommands(*app, context);
    addEnrollCommand(*app, context);
    for (auto* command : app->get_subcommands({})) {
        command->footer("\nAlso --json and --log, as with every command.");
    }
    return app;
}

// Its question for the version also gives the other calls the client version that they send along.
void reach(Client& client)
{
    try {
        client.version();
    } catch (const StatusError&) {
        // Whatever it answers, it listens.
    }
}

Exit run(const std::vector<std::string>& arguments)
{
    Context context;
    const auto report = [&](const Failure& failure) {
        context.output.failure(failure);
        return failure.exitCode;
    };
    try {
        const auto app = makeApp(context);
        try {
            app->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        } catch (const CLI::ParseError& error) {
            const auto unknown = app->remaining();
            if (app->get_subcommands().empty() && !unknown.empty()) {
                throw Failure(Exit::usage, "\"" + unknown.front() + "\" is no command; \"tarn --help\" lists them");
            }
            const bool asked = app->exit(error) == 0; // prints the help or the error
            Output::flush();
            return asked ? Exit::success : Exit::usage;
        }
        if (context.needsDaemon) {
            reach(context.client);
        }
        context.action();
        return Exit::success;
    } catch (const Failure& failure) {
        return report(failure);
    } catch (const StatusError& error) {
        return report(refusal(error, error.what()));
    } catch (const NoDaemon& error) {
        return report({Exit::noDaemon, error.what() + std::string("; \"tarn start\" launches it")});
    } catch (const Error& error) {
        return report({Exit::exchange, error.what() + std::string("; --log shows how far it came")});
    } catch (const std::logic_error& error) { // what the client is given is too much for it, or not fit for it
        return report({Exit::usage, error.what()});
    }
}

} // namespace

} // namespace tarn

int main(int argc, char** argv)
{
    tarn::host::prepare();
    tarn::endOnInterrupt();
    try {
        return static_cast<int>(tarn::run(tarn::host::arguments(argc, argv)));
    } catch (const tarn::Failure& failure) { // standard output failed while a failure was reported
        tarn::Output::note(failure.what());
        return static_cast<int>(failure.exitCode);
    } catch (const std::bad_alloc&) {
        tarn::Output::note("out of memory");
    } catch (const std::exception& error) {
        tarn::Output::note(error.what());
    }
    return static_cast<int>(tarn::Exit::file);
}
