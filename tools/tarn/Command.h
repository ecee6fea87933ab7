#pragma once

#include "Call.h"
#include "Output.h"
#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <tarn/Client.h>

namespace tarn {

// What the command line chose: the parser sets `action`, and main runs it.
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

void addLifecycleCommands(CLI::App& app, Context& context);
void addLoginCommands(CLI::App& app, Context& context);
void addEncryptCommand(CLI::App& app, Context& context);
void addDecryptCommand(CLI::App& app, Context& context);
void addStatusCommands(CLI::App& app, Context& context);
void addTrackingCommands(CLI::App& app, Context& context);
void addSettingCommands(CLI::App& app, Context& context);
void addKeyServerCommands(CLI::App& app, Context& context);
void addEnrollCommand(CLI::App& app, Context& context);

template <class Options>
void onRun(CLI::App* command, Context& context, const std::shared_ptr<Options>& options,
           void (*run)(Context&, const Options&))
{
    command->callback(
        [&context, options, run] { context.action = [&context, options, run] { run(context, *options); }; });
}

inline void addConfigOption(CLI::App* command, std::string& config)
{
    command->add_option("--config", config, "Envelope configuration file, which the daemon reads");
}

inline void addPasswordOption(CLI::App* command, std::string& file)
{
    command->add_option("--password-file", file,
                        "File whose first line is the password; without it TARN_PASSWORD or a hidden prompt");
}

} // namespace tarn
