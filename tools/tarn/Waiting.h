#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>

namespace tarn {

// Tells a person at the terminal, once a call has taken two seconds, what the program is waiting for.
class Waiting
{
public:
    Waiting();

private:
    std::mutex mutex_;
    std::condition_variable_any ended_;
    std::jthread announcer_; // the last member: its thread uses the others
};

} // namespace tarn
