#include "platform/posix/Outbox.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace Platform {

static std::int32_t sendNow(std::int32_t socket, const char* bytes, std::size_t count)
{
    ssize_t sent = 0;
    do {
        sent = ::send(socket, bytes, count, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return static_cast<std::int32_t>(sent);
}

std::int32_t Outbox::send(std::int32_t socket, const char* bytes, std::int32_t count)
{
    const auto size = static_cast<std::size_t>(count);
    if (socket != socket_ || size > bytes_.size() - count_) {
        release();
        socket_ = socket;
    }
    if (size > bytes_.size()) {
        return sendNow(socket, bytes, size);
    }
    std::memcpy(bytes_.data() + count_, bytes, size);
    count_ += size;
    return count;
}

void Outbox::release()
{
    const char* next = bytes_.data();
    while (count_ > 0) {
        const std::int32_t sent = sendNow(socket_, next, count_);
        if (sent < 0) {
            break;
        }
        next += sent;
        count_ -= static_cast<std::size_t>(sent);
    }
    count_ = 0;
}

} // namespace Platform
