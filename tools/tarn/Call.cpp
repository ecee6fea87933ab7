#include "Call.h"

#include "Failure.h"
#include "Host.h"
#include "Output.h"
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <tarn/Client.h>

namespace tarn {

namespace {

volatile std::sig_atomic_t running = 0;

[[noreturn]] void endProcess(Exit code, const char* text)
{
    host::restoreTerminal();
    host::writeError(text);
    std::_Exit(static_cast<int>(code));
}

void onFault(const void* address)
{
    if (isBehindOutputBuffer(address)) {
        endProcess(Exit::tooLarge, "tarn: the daemon's reply is larger than tarn has room for; the process ends\n");
    }
}

void onAbort()
{
    if (running) {
        endProcess(Exit::tooLarge, "tarn: the operation log outgrew the library's limit, most likely through an "
                                   "overlong text in the daemon's reply; the process ends\n");
    }
}

} // namespace

RunningCall::RunningCall(unsigned timeLimit)
{
    running = 1;
    if (timeLimit == 0 && !host::showsErrors()) {
        return;
    }
    watch_ = std::jthread([this, timeLimit](const std::stop_token& stop) {
        using namespace std::chrono;
        const auto start = steady_clock::now();
        const auto callEndsBefore = [&](unsigned seconds) {
            std::unique_lock lock(mutex_);
            ended_.wait_until(lock, stop, start + std::chrono::seconds(seconds), [] { return false; });
            return stop.stop_requested();
        };
        constexpr unsigned patience = 2;
        if (host::showsErrors() && (timeLimit == 0 || timeLimit > patience)) {
            if (callEndsBefore(patience)) {
                return;
            }
            Output::note("waiting for the daemon... (Ctrl-C ends it)");
        }
        if (timeLimit > 0 && !callEndsBefore(timeLimit)) {
            endProcess(Exit::timeout, "tarn: the daemon did not answer within the time of --timeout\n");
        }
    });
}

RunningCall::~RunningCall()
{
    running = 0;
}

void explainTheLibrarysEnd()
{
    host::watchFaults(onFault, onAbort);
}

} // namespace tarn
