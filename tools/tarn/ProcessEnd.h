#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

// The ends of the process that are not a return from main.
namespace tarn {

// Ctrl-C and a request to terminate end the process at once, also in the middle of a call that waits for the daemon,
// with exit code 128 plus the signal's number. The user is told when the library ends the process, which it does when
// an operation log outgrows its buffer, and when a text of the daemon's is larger than the memory for it.
void watchProcessEnd();

// Whether such an end is reported on standard output as a JSON object: while no other object was begun there.
void reportEndAsJson(bool report);

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

// One of these lives while a call of the library runs. It tells a person at the terminal, once the call has taken two
// seconds, what the program is waiting for, and ends the process after the time limit in seconds (0 for none), since
// nothing else ends such a call.
class RunningCall
{
public:
    explicit RunningCall(unsigned timeLimit);
    ~RunningCall();
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;

private:
    std::mutex mutex_;
    std::condition_variable_any ended_;
    std::jthread watch_; // the last member: its thread uses the others
};

} // namespace tarn
