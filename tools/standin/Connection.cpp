#include "Connection.h"

#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace standin {

namespace {

bool mayTryAgain()
{
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

} // namespace

Connection::~Connection()
{
    close(socket_);
}

bool Connection::receive()
{
    std::array<char, std::size_t{1} << 17> block;
    const auto count = recv(socket_, block.data(), block.size(), 0);
    if (count > 0)
        reader_.feed({block.data(), static_cast<std::size_t>(count)});
    return count > 0 || (count < 0 && mayTryAgain());
}

bool Connection::send(std::string frame)
{
    output_ = std::move(frame);
    sent_ = 0;
    return sendMore();
}

bool Connection::sendMore()
{
    while (hasOutput()) {
        const auto count = ::send(socket_, output_.data() + sent_, output_.size() - sent_, MSG_NOSIGNAL);
        if (count < 0)
            return mayTryAgain();
        sent_ += static_cast<std::size_t>(count);
    }
    output_ = {};
    sent_ = 0;
    return true;
}

} // namespace standin
