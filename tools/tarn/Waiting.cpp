#include "Waiting.h"

#include "Host.h"
#include "Output.h"
#include <chrono>

namespace tarn {

Waiting::Waiting()
{
    if (!host::showsErrors()) {
        return;
    }
    announcer_ = std::jthread([this](const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        ended_.wait_for(lock, stop, std::chrono::seconds(2), [] { return false; });
        if (!stop.stop_requested()) {
            Output::note("waiting for the daemon... (Ctrl-C ends it)");
        }
    });
}

} // namespace tarn
