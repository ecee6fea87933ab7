#pragma once

#include "Output.h"
#include "ProcessEnd.h"
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tarn/Client.h>
#include <vector>

namespace CLI {
class App;
}

namespace tarn {

// What the command line chose: parse() sets `action`, and main runs it.
struct Context
{
    Output output;
    bool showLog = false;
    unsigned timeLimit = 0; // seconds for a call, 0 for none
    std::function<void()> action;
    bool needsDaemon = true;
    Client client{[this](const char* function, const std::function<void()>& call) {
        {
            const RunningCall running(timeLimit);
            call();
        }
        if (showLog) {
            Output::log(function, client.lastLog());
        }
    }};
};

// Asks the daemon for its version, which also gives the other calls the client version that they send along.
void reach(Client& client);

// What several commands take.
struct ConfigOptions
{
    std::string config;

    std::string configFile() const; // as the daemon gets it
};

struct AccessOptions : ConfigOptions
{
    std::string passwordFile;

    Access access(const std::string& user) const; // reads the password, or asks for it
};

enum class Needed { no, yes };

// Adds arguments and options to a command (or, in main, to the program), each with the variable that gets its value.
// All that takes long to compile of the argument parser is behind this class.
class Parser
{
public:
    explicit Parser(CLI::App& app) : app_(&app) {}

    void argument(const std::string& name, std::string& value, const std::string& description,
                  Needed needed = Needed::yes);
    void flag(const std::string& name, bool& value, const std::string& description);
    // `placeholder` is what help shows for the value.
    void text(const std::string& name, const std::string& placeholder, std::string& value,
              const std::string& description, Needed needed = Needed::no);
    void text(const std::string& name, const std::string& placeholder, std::optional<std::string>& value,
              const std::string& description);
    template <class Number> // int or unsigned
    void number(const std::string& name, const std::string& placeholder, Number& value, Number lowest, Number highest,
                const std::string& description);
    // May be repeated.
    void texts(const std::string& name, const std::string& placeholder, std::vector<std::string>& values,
               const std::string& description);
    // The same, also several with ";" between them.
    void addresses(const std::string& name, std::vector<std::string>& values, const std::string& description,
                   Needed needed = Needed::no);

    void envelope(std::string& file, Needed needed = Needed::yes);
    void config(ConfigOptions& options);
    void passwordFile(std::string& file);
    void access(AccessOptions& options);

    // Adds a command to a program.
    Parser command(const std::string& name, const std::string& description, std::function<void()> onChosen);

private:
    CLI::App* app_;
};

// Adds a command; `run` gets its options once the command line has been read.
template <class Options>
std::pair<Parser, Options&> addCommand(Parser& program, Context& context, const std::string& name,
                                       const std::string& description, void (*run)(Context&, const Options&),
                                       bool needsDaemon = true)
{
    const auto options = std::make_shared<Options>();
    return {program.command(name, description,
                            [&context, options, run, needsDaemon] {
                                context.needsDaemon = needsDaemon;
                                context.action = [&context, options, run] { run(context, *options); };
                            }),
            *options};
}

void addLifecycleCommands(Parser& program, Context& context);
void addLoginCommands(Parser& program, Context& context);
void addEncryptCommand(Parser& program, Context& context);
void addDecryptCommand(Parser& program, Context& context);
void addStatusCommands(Parser& program, Context& context);
void addTrackingCommands(Parser& program, Context& context);
void addLockExpiryCommands(Parser& program, Context& context);
void addKeyServerCommands(Parser& program, Context& context);
void addEnrollCommand(Parser& program, Context& context);

// Reads the program's arguments. Returns false when they ask for nothing but a text, which has been printed.
bool parse(std::vector<std::string> arguments, Context& context);

} // namespace tarn
