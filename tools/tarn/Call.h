#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>

namespace tarn {

// One of these lives while a call of the library runs. It tells a person at the terminal, once the call has taken two
// seconds, what the program is waiting for, and ends the process after the time limit (0 for none), since nothing else
// ends such a call.
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

// The library ends the process when an operation log outgrows its buffer, and texts of the daemon's that are larger
// than theirs end in an access violation. Then the user is told so.
void explainTheLibrarysEnd();

} // namespace tarn
