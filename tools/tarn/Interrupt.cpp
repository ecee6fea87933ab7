#include "Interrupt.h"

#include "Failure.h"
#include "Host.h"
#include <csignal>
#include <cstdlib>

namespace tarn {

namespace {

volatile std::sig_atomic_t delays = 0;
volatile std::sig_atomic_t noted = 0;

void onInterrupt(int signal)
{
    // A second interrupt does not wait for what the first one let finish.
    if (delays > 0 && !noted) {
        noted = signal;
        std::signal(signal, onInterrupt);
        return;
    }
    host::restoreTerminal();
    std::_Exit(128 + signal);
}

} // namespace

void endOnInterrupt()
{
    for (const int signal : host::endingSignals()) {
        // A parent that ignores the signal (nohup, a job in the background) wants it ignored here as well.
        if (std::signal(signal, onInterrupt) == SIG_IGN) {
            std::signal(signal, SIG_IGN);
        }
    }
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

} // namespace tarn
