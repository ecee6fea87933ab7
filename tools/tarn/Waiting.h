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
    std::mutex mutex;
    std::condition_variable_any ended;
    std::jthread announcer; // the last member: its thread uses the others
};

} // namespace tarn
