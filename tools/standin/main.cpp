#include "Commands.h"
#include "Server.h"
#include "Store.h"
#include "Texts.h"
#include "Trace.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <fcntl.h>
#include <glib.h>
#include <iostream>
#include <sys/stat.h>

namespace {

using standin::Settings;

enum ExitCode {
    success = 0,
    unexpectedFailure = 1,
    wrongArguments = 2,
    storeFailure = 3,
    portFailure = 4,
    outputFailure = 5
};

// Nothing that is opened later becomes standard input, output or error: a client would receive what is printed.
void fillStandardDescriptors()
{
    for (int descriptor = open("/dev/null", O_RDWR); descriptor >= 0; descriptor = open("/dev/null", O_RDWR)) {
        if (descriptor > STDERR_FILENO) {
            close(descriptor);
            return;
        }
    }
}

// The signals that end the daemon wait in all threads until the server asks for them.
sigset_t blockEndingSignals()
{
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    // A file that may not grow is then an error of the store and not the end of the process.
    std::signal(SIGXFSZ, SIG_IGN);
    return ending;
}

// SQLite takes some names for a store in memory or for a URI.
std::string storePathProblem(const std::string& path)
{
    if (path.empty()) {
        return "the file name is empty";
    }
    const bool special = path.front() == ':' || g_ascii_strncasecmp(path.c_str(), "file:", 5) == 0;
    return special ? "SQLite gives a meaning of its own to this name: write ./" + path : "";
}

std::pair<standin::Tag, std::int16_t> parseAnswer(const std::string& text)
{
    std::int16_t status = 0;
    const auto tag = text.size() > 3 && text[2] == '=' ? standin::tag({text[0], text[1], '\0'}) : standin::Tag{};
    if (standin::findCommand(tag) == nullptr || !CLI::detail::lexical_cast(text.substr(3), status)) {
        throw CLI::ValidationError("--answer", "\"" + text + "\" is not a command and a status, such as DE=20");
    }
    return {tag, status};
}

int serve(const Settings& settings, const sigset_t& ending)
{
    auto database = standin::openStore(settings.storePath);
    standin::Context context(database, settings);
    context.started = standin::nowMillis();
    standin::Trace trace(settings.traced);
    standin::Server server(context, trace);
    std::cout << "tarn-standin: listening on 127.0.0.1:" << server.port() << ", store "
              << (settings.storePath.empty() ? "in memory" : settings.storePath) << std::endl;
    if (!std::cout) {
        std::cerr << "tarn-standin: standard output cannot be written" << std::endl;
        return outputFailure;
    }
    server.run(ending);
    return success;
}

} // namespace

int main(int argc, char** argv)
{
    fillStandardDescriptors();
    CLI::App app{"A stand-in for the secure-mail daemon, for development and demonstration. It encrypts nothing.",
                 "tarn-standin"};
    Settings settings;
    app.add_option("--store", settings.storePath, "SQLite file that keeps the state (default: in memory)")
        ->check(storePathProblem);
    app.add_option("--port", settings.port, "port of the loopback interface, 0 for any free one")
        ->capture_default_str();
    app.add_option_function<std::string>(
           "--config-dir",
           [&](const std::string& folder) { settings.configurationFolder = std::filesystem::canonical(folder); },
           "folder of the envelope configuration files that requests may name (default: none may)")
        ->check(CLI::ExistingDirectory);
    app.add_option_function<unsigned>(
           "--idle", [&](unsigned seconds) { settings.idleLimit = std::chrono::seconds(seconds); },
           "seconds until a silent connection is closed, 0 for never (default: 3600)")
        ->check(CLI::Range(0U, 1'000'000U));
    app.add_flag("--trace", settings.traced, "print each request and reply on a line, secrets masked");
    app.add_option_function<std::vector<std::string>>(
           "--answer",
           [&](const std::vector<std::string>& answers) {
               for (const auto& answer : answers) {
                   settings.faults.answers.insert(parseAnswer(answer));
               }
           },
           "CODE=STATUS: answer this command with this status and do nothing else; can be given several times")
        ->type_name("CODE=STATUS")
        ->allow_extra_args(false);
    app.add_option_function<int>(
           "--delay", [&](int millis) { settings.faults.delay = std::chrono::milliseconds(millis); },
           "milliseconds to wait before each reply")
        ->check(CLI::Range(0, 1'000'000));
    app.add_option_function<int>(
           "--reset-after", [&](int replies) { settings.faults.repliesBeforeReset = replies; },
           "replies after which a connection is reset, at its next request")
        ->check(CLI::NonNegativeNumber);
    app.footer("Accounts of a new store: alice@example.com (wonderland), bob@example.com (builder),\n"
               "carol@example.com (caravan), and the disabled dave@example.com (doorstop).\n\n"
               "Exit codes: 0 ended by a signal or a stop request, 1 unexpected failure, 2 wrong arguments,\n"
               "3 the store cannot be used, 4 the port cannot be listened on, 5 standard output cannot be written.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? success : wrongArguments;
    }

    const auto ending = blockEndingSignals();
    try {
        return serve(settings, ending);
    } catch (const standin::StoreError& error) {
        std::cerr << "tarn-standin: store " << (settings.storePath.empty() ? "in memory" : settings.storePath) << ": "
                  << error.what() << std::endl;
        return storeFailure;
    } catch (const standin::ListenError& error) {
        std::cerr << "tarn-standin: " << error.what() << std::endl;
        return portFailure;
    } catch (const std::exception& error) {
        std::cerr << "tarn-standin: " << error.what() << std::endl;
        return unexpectedFailure;
    }
}
