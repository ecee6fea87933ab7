#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Platform {

// Where small sends wait until the answer to them is wanted or the room is used up, so that a request of many small
// values leaves at once and costs one system call. Nothing changes but the time at which bytes leave: their order is
// kept, whatever was sent before a failed call included.
class Outbox
{
public:
    // Takes the bytes over, or sends them when they are too many. Returns their number, or -1 when sending failed.
    std::int32_t send(std::int32_t socket, const char* bytes, std::int32_t count);

    // Sends what waits. What cannot be sent is dropped: the connection is broken then, and the next receive says so.
    void release();

private:
    std::int32_t socket_ = -1;
    std::size_t count_ = 0;
    std::array<char, 16384> bytes_;
};

} // namespace Platform
