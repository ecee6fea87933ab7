#include "Command.h"
#include "Failure.h"
#include "Host.h"
#include "ProcessEnd.h"
#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace tarn {

namespace {

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
        if (!parse(arguments, context)) {
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
    } catch (const std::filesystem::filesystem_error& error) {
        return report({Exit::file, error.what()});
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
