#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Host.h"
#include "Text.h"
#include <chrono>
#include <thread>

namespace tarn {

namespace {

struct NoOptions
{
};

struct StartOptions
{
    std::string jar;
    unsigned waitSeconds = 0;
};

void version(Context& context, const NoOptions&)
{
    const std::string daemonVersion = context.client.version();
    context.output.result("daemon " + printable(daemonVersion) + "\ntarn   " TARN_VERSION "\n",
                          {{"daemonVersion", daemonVersion}, {"clientVersion", TARN_VERSION}});
}

// Each failed attempt leaves a socket open in the library: so many attempts stay below what a process may have open.
constexpr unsigned longestWait = 600;

void waitUntilListening(Client& client, unsigned seconds)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    for (;;) {
        try {
            return reach(client);
        } catch (const NoDaemon&) {
            if (std::chrono::steady_clock::now() >= deadline) {
                throw Failure(Exit::noDaemon, "the launch was accepted, but no daemon listens after " +
                                                  std::to_string(seconds) + " seconds");
            }
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

int launch(Client& client, const std::string& jar)
{
    try {
        return client.startDaemon(host::systemText(jar));
    } catch (const StatusError& error) {
        throw Failure(Exit::refused,
                      "the system did not launch " TARN_JAVA_PATH ": it answered " + std::to_string(error.status()) +
                          (error.status() == 2 ? " (no such program)" : ""),
                      {{"launchResult", error.status()}});
    }
}

void start(Context& context, const StartOptions& options)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(toPath(options.jar), error)) {
        throw Failure(Exit::file, options.jar + " is not a file");
    }
    const std::string jar = absolutePath(options.jar);
    if (jar.find(' ') != std::string::npos) {
        Output::note("the path of the jar file contains a space: Java gets it in pieces and will not find the file");
    }
    const int answer = launch(context.client, jar);

    if (options.waitSeconds > 0) {
        waitUntilListening(context.client, options.waitSeconds);
    }
    context.output.result(options.waitSeconds > 0 ? "The daemon listens.\n" : "The launch was accepted.\n",
                          {{"launchResult", answer}, {"listens", options.waitSeconds > 0}});
}

void stop(Context& context, const NoOptions&)
{
    context.client.stopDaemon();
    context.output.result("The daemon stops.\n", nlohmann::json::object());
}

} // namespace

void addLifecycleCommands(Parser& program, Context& context)
{
    // This command is the question that finds out whether there is a daemon.
    addCommand(program, context, "version", "Ask the daemon for its version", version, false);

    auto [parser, options] = addCommand(program, context, "start", "Launch the daemon", start, false);
    parser.argument("JAR", options.jar, "The daemon's jar file");
    parser.number("--wait", "SECONDS", options.waitSeconds, 0u, longestWait,
                  "Seconds to wait until the daemon listens");

    addCommand(program, context, "stop", "Ask the daemon to stop", stop);
}

} // namespace tarn
