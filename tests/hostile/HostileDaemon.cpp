#include "HostileDaemon.h"

#include "TarnRemoteClient.h"
#include "Wire.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <thread>

using std::chrono::steady_clock;

#ifdef __SANITIZE_ADDRESS__
// The sanitizer keeps a record of each block, an eighth of its size, which would take most of the time here. So it
// refuses the largest ones: that, too, must end in a failed call.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options()
{
    return "max_allocation_size_mb=128:allocator_may_return_null=1";
}
#endif

HostileDaemon::~HostileDaemon()
{
    if (peer_ != sockets::none) {
        sockets::reset(peer_);
    }
    sockets::close(listener_);
}

void HostileDaemon::renew()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (peer_ != sockets::none) {
        sockets::reset(peer_);
    }
    const SOCKET fresh = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(fresh, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(fresh, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || dup2(fresh, socket_) < 0) {
        throw std::runtime_error("set-up failure: no fresh connection");
    }
    sockets::close(fresh);
    peer_ = sockets::acceptFrom(listener_, std::chrono::seconds(1));
}

Outcome HostileDaemon::answer(const std::string& reply, const Call& call, const Manner& manner)
{
    static std::vector<char> log(TARN_LOG_SIZE);
    std::atomic<bool> returned = false;
    if (manner.early) {
        sockets::sendAll(peer_, reply);
    }
    std::jthread daemon([&] { serve(reply, manner, returned); });
    errno = 0;
    log[0] = '\0';
    Outcome outcome{.result = call(log.data()), .log = {}, .waited = false};
    returned = true;
    daemon.join();
    outcome.log = log.data();
    // The error number was cleared: only a failed receive has left its own in the log.
    outcome.waited = outcome.log.ends_with(" : " + std::to_string(ECONNRESET) + "\n");
    learnSocket(outcome.log);
    return outcome;
}

void HostileDaemon::serve(const std::string& reply, const Manner& manner, const std::atomic<bool>& returned)
{
    if (peer_ == sockets::none) {
        peer_ = sockets::acceptFrom(listener_, patient);
    }
    std::string request;
    while (wire::messageLength(request) == 0 && !returned) {
        if (!sockets::receiveSome(peer_, request, std::chrono::milliseconds(100))) {
            return;
        }
    }
    std::string_view rest = manner.early ? std::string_view() : std::string_view(reply).substr(0, manner.resetAfter);
    while (!rest.empty()) {
        const std::size_t count = std::min(rest.size(), manner.packet);
        sockets::sendAll(peer_, rest.substr(0, count));
        rest.remove_prefix(count);
        std::this_thread::sleep_for(manner.pause);
    }
    const auto patience = manner.resetAfter == SIZE_MAX ? manner.patience : std::chrono::milliseconds(0);
    auto quietSince = steady_clock::now();
    while (!returned) {
        if (unread()) {
            quietSince = steady_clock::now();
        } else if (steady_clock::now() - quietSince >= patience) {
            sockets::reset(peer_);
            peer_ = sockets::none;
            return;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
}

bool HostileDaemon::unread() const
{
    int count = 0;
    return socket_ != sockets::none && ioctl(socket_, FIONREAD, &count) == 0 && count > 0;
}

void HostileDaemon::learnSocket(const std::string& log)
{
    constexpr std::string_view label = "Got socket: ";
    if (const std::size_t at = log.find(label); at != std::string::npos) {
        socket_ = std::atoi(log.c_str() + at + label.size());
    }
    if (socket_ != sockets::none && fcntl(socket_, F_GETFD) < 0) {
        // The call has closed it, as a stop does.
        sockets::close(peer_);
        peer_ = socket_ = sockets::none;
    }
}
