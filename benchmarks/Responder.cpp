#include "Responder.h"

#include "Floor.h"
#include "Wire.h"

#include <atomic>
#include <csignal>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Bench {

// What both processes see.
struct Responder::Shared
{
    std::atomic<std::size_t> chosen;
    std::atomic<std::size_t> requestSize;
    char request[16 << 20];
};

namespace {

int listenOnDaemonPort()
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = daemonAddress();
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(listener, 8) != 0) {
        die("benchmarks: port 53007 is needed and cannot be used (is a daemon running?)");
    }
    return listener;
}

bool takeRequest(int connection, Responder::Shared& shared)
{
    std::size_t count = 0;
    do {
        const ssize_t received = recv(connection, shared.request + count, sizeof shared.request - count, 0);
        if (received <= 0) {
            return false;
        }
        count += static_cast<std::size_t>(received);
    } while (wire::messageLength({shared.request, count}) == 0);
    shared.requestSize = count;
    return true;
}

void serve(int connection, Responder::Shared& shared, const std::vector<std::string>& replies)
{
    while (takeRequest(connection, shared)) {
        sendAll(connection, replies[shared.chosen]);
    }
    close(connection);
}

[[noreturn]] void run(int listener, Responder::Shared& shared, const std::vector<std::string>& replies)
{
    while (true) {
        const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        sendAtOnce(connection);
        std::thread([&, connection] { serve(connection, shared, replies); }).detach();
    }
}

} // namespace

Responder::Responder(const std::function<std::vector<std::string>()>& makeReplies)
{
    const int listener = listenOnDaemonPort();
    void* const memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        die("benchmarks: no memory for the requests");
    }
    shared_ = static_cast<Shared*>(memory);
    process_ = fork();
    if (process_ < 0) {
        die("benchmarks: the responder cannot be started");
    }
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        run(listener, *shared_, makeReplies());
    }
    close(listener);
}

Responder::~Responder()
{
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    munmap(shared_, sizeof(Shared));
}

void Responder::choose(std::size_t reply)
{
    shared_->chosen = reply;
}

std::string_view Responder::latestRequest() const
{
    return {shared_->request, shared_->requestSize};
}

} // namespace Bench
