#include "client/CallFrame.h"

namespace Client {

// A log that cannot grow any more must not end in an exception out of a handler: the line is then lost, or the rest of
// it.
void logFailure(LogLabel label, std::uint32_t error) noexcept
try {
    log(label, error);
} catch (...) {
}

void logFailure(const Merrow::CommandException& exception) noexcept
try {
    log("Unknown parameter was found. Please check your configuration file.", exception.what());
} catch (...) {
}

} // namespace Client
