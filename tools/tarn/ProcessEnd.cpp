#include "ProcessEnd.h"

#include "Failure.h"
#include "Host.h"
#include "Output.h"
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <tarn/Client.h>

namespace tarn {

namespace {

volatile std::sig_atomic_t delays = 0;
volatile std::sig_atomic_t noted = 0;
volatile std::sig_atomic_t callRuns = 0;
volatile std::sig_atomic_t asJson = 0;

// Safe in a signal handler, where no memory can be had: the object is written piece by piece.
[[noreturn]] void endProcess(int code, const char* error)
{
    host::restoreTerminal();
    if (asJson) {
        asJson = 0;
        const auto digit = [code](int unit) { return static_cast<char>('0' + code / unit % 10); };
        const char digits[] = {digit(100), digit(10), digit(1), '\0'};
        for (const char* piece : {"{\n  \"error\": \"", error, "\",\n  \"exitCode\": ", digits + (code < 10 ? 2 : 0),
                                  ",\n  \"message\": null,\n  \"status\": null\n}\n"}) {
            host::write(host::Stream::output, piece);
        }
    }
    std::_Exit(code);
}

[[noreturn]] void endProcess(Exit code, const char* error)
{
    for (const char* piece : {"tarn: ", error, "\n"}) {
        host::write(host::Stream::error, piece);
    }
    endProcess(static_cast<int>(code), error);
}

void onInterrupt(int signal)
{
    // A second interrupt does not wait for what the first one let finish.
    if (delays > 0 && !noted) {
        noted = signal;
        std::signal(signal, onInterrupt);
        return;
    }
    endProcess(128 + signal, "ended by a signal");
}

void onFault(const void* address)
{
    if (isBehindOutputBuffer(address)) {
        endProcess(Exit::tooLarge, "the daemon's reply is larger than tarn has room for; the process ends");
    }
}

void onAbort()
{
    if (callRuns) {
        endProcess(Exit::tooLarge, "the operation log outgrew the library's limit, most likely through an overlong "
                                   "text in the daemon's reply; the process ends");
    }
}

} // namespace

void watchProcessEnd()
{
    for (const int signal : host::endingSignals()) {
        // A parent that ignores the signal (nohup, a job in the background) wants it ignored here as well.
        if (std::signal(signal, onInterrupt) == SIG_IGN) {
            std::signal(signal, SIG_IGN);
        }
    }
    host::watchFaults(onFault, onAbort);
}

void reportEndAsJson(bool report)
{
    asJson = report;
}

int notedInterrupt()
{
    return noted;
}

InterruptDelay::InterruptDelay()
{
    delays = delays + 1;
}

InterruptDelay::~InterruptDelay()
{
    delays = delays - 1;
}

void InterruptDelay::check()
{
    if (noted) {
        throw Failure(static_cast<Exit>(128 + noted), "interrupted, nothing was written");
    }
}

RunningCall::RunningCall(unsigned timeLimit)
{
    callRuns = 1;
    if (timeLimit == 0 && !host::isTerminal(host::Stream::error)) {
        return;
    }
    watch_ = std::jthread([this, timeLimit](const std::stop_token& stop) {
        using namespace std::chrono;
        const auto start = steady_clock::now();
        const auto callEndsWithin = [&](unsigned seconds) {
            std::unique_lock lock(mutex_);
            ended_.wait_until(lock, stop, start + std::chrono::seconds(seconds), [] { return false; });
            return stop.stop_requested();
        };
        constexpr unsigned patience = 2;
        if (host::isTerminal(host::Stream::error) && (timeLimit == 0 || timeLimit > patience)) {
            if (callEndsWithin(patience)) {
                return;
            }
            Output::note("waiting for the daemon... (Ctrl-C ends it)");
        }
        if (timeLimit > 0 && !callEndsWithin(timeLimit)) {
            endProcess(Exit::timeout, "the daemon did not answer within the time of --timeout");
        }
    });
}

RunningCall::~RunningCall()
{
    callRuns = 0;
}

} // namespace tarn
