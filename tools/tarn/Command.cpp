#include "Command.h"

#include "Files.h"
#include "Secrets.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <sstream>
#include <utility>

namespace tarn {

namespace {

const char* const summary = "Command-line client of the secure-mail daemon";
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

void setUp(CLI::App& app, Context& context)
{
    app.footer(footer);
    app.require_subcommand(1);
    app.fallthrough(); // the options of all commands may also follow the command
    app.set_version_flag("--version", "tarn " TARN_VERSION, "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.get_formatter()->label("Positionals", "Arguments");
    app.get_formatter()->label("REQUIRED", "(required)");
    Parser program(app);
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

} // namespace

std::string ConfigOptions::configFile() const
{
    return absolutePath(config);
}

Access AccessOptions::access(const std::string& user) const
{
    return {password(passwordFile, user), configFile()};
}

void reach(Client& client)
{
    try {
        client.version();
    } catch (const StatusError&) {
        // Whatever it answers, it listens.
    }
}

void Parser::argument(const std::string& name, std::string& value, const std::string& description, Needed needed)
{
    app_->add_option(name, value, description)->type_name("")->required(needed == Needed::yes);
}

void Parser::flag(const std::string& name, bool& value, const std::string& description)
{
    app_->add_flag(name, value, description);
}

void Parser::text(const std::string& name, const std::string& placeholder, std::string& value,
                  const std::string& description, Needed needed)
{
    auto* option = app_->add_option(name, value, description)->type_name(placeholder);
    option->required(needed == Needed::yes);
    if (!value.empty()) {
        option->capture_default_str();
    }
}

void Parser::text(const std::string& name, const std::string& placeholder, std::optional<std::string>& value,
                  const std::string& description)
{
    app_->add_option(name, value, description)->type_name(placeholder);
}

template <class Number>
void Parser::number(const std::string& name, const std::string& placeholder, Number& value, Number lowest,
                    Number highest, const std::string& description)
{
    app_->add_option(name, value, description)
        ->type_name(placeholder)
        ->check(CLI::Range(lowest, highest).description(""));
}

template void Parser::number(const std::string&, const std::string&, int&, int, int, const std::string&);
template void Parser::number(const std::string&, const std::string&, unsigned&, unsigned, unsigned, const std::string&);

void Parser::texts(const std::string& name, const std::string& placeholder, std::vector<std::string>& values,
                   const std::string& description)
{
    // One value for each option, so that an argument may follow it.
    app_->add_option(name, values, description + "; may be repeated")->type_name(placeholder)->allow_extra_args(false);
}

void Parser::addresses(const std::string& name, std::vector<std::string>& values, const std::string& description,
                       Needed needed)
{
    texts(name, "ADDRESS", values, description);
    app_->get_option(name)->delimiter(';')->required(needed == Needed::yes);
}

void Parser::envelope(std::string& file, Needed needed)
{
    argument("ENVELOPE", file, "File with the envelope; - is standard input", needed);
}

void Parser::config(ConfigOptions& options)
{
    text("--config", "FILE", options.config, "Envelope configuration file, which the daemon reads");
}

void Parser::passwordFile(std::string& file)
{
    text("--password-file", "FILE", file,
         "File whose first line is the password; without it TARN_PASSWORD or a hidden prompt");
}

void Parser::access(AccessOptions& options)
{
    passwordFile(options.passwordFile);
    config(options);
}

Parser Parser::command(const std::string& name, const std::string& description, std::function<void()> onChosen)
{
    auto* command = app_->add_subcommand(name, description)->group("Commands");
    command->callback(std::move(onChosen));
    command->footer("\nAlso --json, --log and --timeout, as with every command.");
    return Parser(*command);
}

bool parse(std::vector<std::string> arguments, Context& context)
{
    CLI::App app(summary, "tarn");
    setUp(app, context);
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

} // namespace tarn
