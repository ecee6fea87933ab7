#pragma once

namespace tarn {

// Ctrl-C and a request to terminate end the process at once, also in the middle of a call that waits for the daemon,
// with exit code 128 plus the signal's number.
void endOnInterrupt();

// The signal that was noted, 0 without one.
int notedInterrupt();

// While one of these lives, an interrupt is only noted, so that files under construction can be removed.
class InterruptDelay
{
public:
    InterruptDelay();
    ~InterruptDelay();
    InterruptDelay(const InterruptDelay&) = delete;
    InterruptDelay& operator=(const InterruptDelay&) = delete;

    // Throws when an interrupt was noted.
    static void check();
};

} // namespace tarn
