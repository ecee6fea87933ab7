#include "Database.h"
#include "Server.h"
#include "Texts.h"
#include "Trace.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>

namespace {

enum ExitCode { success = 0, unexpectedFailure = 1, wrongArguments = 2, storeFailure = 3, portFailure = 4 };

volatile std::sig_atomic_t stopSignal = 0;

// The signals that end the daemon are let through only while it waits, so that no exchange is cut in half.
void prepareSignals()
{
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGINT, SIGTERM}) {
        sigaddset(&ending, number);
        std::signal(number, [](int) { stopSignal = 1; });
    }
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    // A file that may not grow is then an error of the store and not the end of the process.
    std::signal(SIGXFSZ, SIG_IGN);
}

int serve(const std::string& storePath, std::uint16_t port, bool traced)
{
    standin::Database database(storePath);
    standin::Context context(database);
    context.started = standin::nowMillis();
    standin::Trace trace(traced);
    standin::Server server(port, context, trace);
    std::cout << "tarn-standin: listening on 127.0.0.1:" << server.port() << ", store "
              << (storePath.empty() ? "in memory" : storePath) << std::endl;
    if (!std::cout)
        std::cerr << "tarn-standin: standard output cannot be written" << std::endl;
    server.run(stopSignal);
    return success;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"A stand-in for the secure-mail daemon, for development and demonstration. It encrypts nothing.",
                 "tarn-standin"};
    std::string storePath;
    std::uint16_t port = 53007;
    bool traced = false;
    app.add_option("--store", storePath, "SQLite file that keeps the state (default: in memory, gone at the end)")
        ->check([](const std::string& path) { return path.empty() ? "the file name is empty" : ""; });
    app.add_option("--port", port, "port of the loopback interface, 0 for any free one")->capture_default_str();
    app.add_flag("--trace", traced, "print each request and reply, secrets masked");
    app.footer("Accounts of a new store: alice@example.com (wonderland), bob@example.com (builder),\n"
               "carol@example.com (caravan), and the disabled dave@example.com (doorstop).\n\n"
               "Exit codes: 0 ended by a signal or a stop request, 1 unexpected failure, 2 wrong arguments,\n"
               "3 the store cannot be used, 4 the port cannot be listened on.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? success : wrongArguments;
    }

    prepareSignals();
    try {
        return serve(storePath, port, traced);
    } catch (const standin::StoreError& error) {
        std::cerr << "tarn-standin: store " << (storePath.empty() ? "in memory" : storePath) << ": " << error.what()
                  << std::endl;
        return storeFailure;
    } catch (const standin::ListenError& error) {
        std::cerr << "tarn-standin: " << error.what() << std::endl;
        return portFailure;
    } catch (const std::exception& error) {
        std::cerr << "tarn-standin: " << error.what() << std::endl;
        return unexpectedFailure;
    }
}
