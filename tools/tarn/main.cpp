#include "Command.h"
#include "Failure.h"
#include "Host.h"
#include "ProcessEnd.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace tarn {

namespace {

const char* const description = "Command-line client of the secure-mail daemon";
const char* const footer = R"(
Examples:
  tarn encrypt letter.eml --from alice@example.com --to bob@example.com --out letter.env
  tarn decrypt letter.env --recipient bob@example.com --out letter
  tarn status letter.env --recipient bob@example.com --json

Environment:
  TARN_PASSWORD                     the password, unless --password-file names a file
  TARN_SESSION_KEY                  decrypt: a session key, unless --session-key-file names a file
  TARN_PASS_PHRASE, TARN_ANSWER_1 to TARN_ANSWER_3
                                    enroll: the pass phrase and the answers

Exit codes:
  0    done: the daemon answered with status 0
  1    the daemon answered with another status, or does not have what was asked for
  2    usage: an argument or an input is wrong, or a secret is missing
  3    no daemon listens
  4    a file or standard output cannot be read or written
  5    the exchange with the daemon broke down
  6    the daemon's reply is too large
  7    the daemon did not answer within --timeout
  128 and more  ended by a signal, such as 130 by Ctrl-C

"tarn help COMMAND" lists the options of a command.)";

std::unique_ptr<CLI::App> makeApp(Context& context)
{
    auto app = std::make_unique<CLI::App>(description, "tarn");
    app->footer(footer);
    app->require_subcommand(1);
    app->fallthrough(); // the options of all commands may also follow the command
    app->set_version_flag("--version", "tarn " TARN_VERSION, "Print the version and exit");
    app->set_help_flag("-h,--help", "Print this help and exit");
    app->get_formatter()->label("SUBCOMMAND", "COMMAND");
    app->get_formatter()->label("Positionals", "Arguments");
    app->get_formatter()->label("REQUIRED", "(required)");
    Parser program(*app);
    program.flag("--json", context.output.asJson, "Print the outcome as a JSON object");
    program.flag("--log", context.showLog, "Print the operation log on standard error");
    program.number("--timeout", "SECONDS", context.timeLimit, 1u, 1'000'000u,
                   "Seconds to wait for each answer of the daemon (default: for ever)");
    addLifecycleCommands(program, context);
    addLoginCommands(program, context);
    addEncryptCommand(program, context);
    addDecryptCommand(program, context);
    addStatusCommands(program, context);
    addTrackingCommands(program, context);
    addLockExpiryCommands(program, context);
    addKeyServerCommands(program, context);
    addEnrollCommand(program, context);
    return app;
}

std::size_t editDistance(std::string_view left, std::string_view right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), 0u);
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t changed = diagonal + (left[i] == right[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

Failure unknownCommand(CLI::App& app, const std::string& name)
{
    std::string text = "unknown command \"" + name + "\"; ";
    for (const auto* command : app.get_subcommands({})) {
        if (editDistance(command->get_name(), name) <= 2) {
            return {Exit::usage, text + "is \"" + command->get_name() + "\" meant?"};
        }
    }
    return {Exit::usage, text + "\"tarn --help\" lists all"};
}

// Returns false when the command line asked for nothing but a text, which has been printed.
bool parse(CLI::App& app, std::vector<std::string> arguments)
{
    if (!arguments.empty() && arguments.front() == "help") {
        arguments.erase(arguments.begin());
        arguments.push_back("--help");
    }
    std::ranges::reverse(arguments);
    try {
        app.parse(std::move(arguments));
        return true;
    } catch (const CLI::ParseError& error) {
        const auto chosen = app.get_subcommands();
        std::ostringstream text;
        if (app.exit(error, text, text) == 0) {
            Output::raw(text.str());
            return false;
        }
        if (const auto unknown = app.remaining(); chosen.empty() && !unknown.empty()) {
            throw unknownCommand(app, unknown.front());
        }
        const std::string command = chosen.empty() ? "" : chosen.front()->get_name() + " ";
        throw Failure(Exit::usage, error.what() + std::string("; see \"tarn ") + command + "--help\"");
    }
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
        // A command line that cannot be parsed is answered in the form that it asks for as well.
        context.output.asJson = std::ranges::find(arguments, "--json") != arguments.end();
        reportEndAsJson(context.output.asJson);
        const auto app = makeApp(context);
        if (!parse(*app, arguments)) {
            return Exit::success;
        }
        if (context.needsDaemon) {
            reach(context.client);
        }
        context.action();
        return Exit::success;
    } catch (const Failure& failure) {
        return report(failure);
    } catch (const StatusError& error) {
        return report(refusal(error, describe(error)));
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
    using namespace tarn;
    host::prepare();
    watchProcessEnd();
    Exit code = Exit::file;
    try {
        code = run(host::arguments(argc, argv));
    } catch (const Failure& failure) { // standard output failed while a failure was reported
        Output::note(failure.what());
        code = failure.exitCode;
    } catch (const std::bad_alloc&) {
        Output::note("out of memory");
    } catch (const std::exception& error) {
        Output::note(error.what());
    }
    const int signal = notedInterrupt();
    return signal != 0 ? 128 + signal : static_cast<int>(code);
}
