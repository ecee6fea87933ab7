// What the process keeps when calls go on and on: nothing, but for the objects that the library leaves to it.
#include "hostile/Subjects.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <thread>

#ifdef __SANITIZE_ADDRESS__
// gcc's sanitizer has it, but not the header that declares it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace {

constexpr std::size_t calls = 100'000;

// What the program has allocated and not freed.
std::size_t bytesInUse()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

// Answers every request at once. It keeps nothing of what it reads.
class Responder
{
public:
    explicit Responder(std::map<std::string, std::string> replies)
        : replies_(std::move(replies)), listener_(sockets::listenOn(53007)),
          thread_([this](std::stop_token stop) { run(stop); })
    {
    }

    ~Responder()
    {
        thread_.request_stop();
        thread_.join();
        sockets::close(listener_);
    }

private:
    void run(std::stop_token stop)
    {
        while (!stop.stop_requested()) {
            const SOCKET socket = sockets::acceptFrom(listener_, std::chrono::milliseconds(100));
            std::string bytes;
            while (socket != sockets::none && !stop.stop_requested() &&
                   sockets::receiveSome(socket, bytes, std::chrono::milliseconds(100))) {
                if (const std::size_t length = wire::messageLength(bytes); length != 0) {
                    sockets::sendAll(socket, replies_.at(bytes.substr(2, 2)));
                    bytes.erase(0, length);
                }
            }
            if (socket != sockets::none) {
                sockets::close(socket);
            }
        }
    }

    const std::map<std::string, std::string> replies_;
    const SOCKET listener_;
    std::jthread thread_;
};

std::map<std::string, std::string> goodReplies()
{
    std::map<std::string, std::string> replies;
    for (const Subject& subject : subjects()) {
        replies[subject.code] = framed(subject.code, subject.fields.bytes);
    }
    return replies;
}

// Lets one kind of call go on; returns what each has left behind, in bytes.
double leftByEach(const Subject& subject, std::size_t count, std::int32_t expected)
{
    static std::vector<char> log(32766);
    const auto call = [&] { ASSERT_EQ(subject.call(log.data()), expected) << log.data(); };
    for (int warmUp = 0; warmUp < 50; ++warmUp) {
        call();
    }
    const std::size_t before = bytesInUse();
    for (std::size_t i = 0; i < count && !testing::Test::HasFailure(); ++i) {
        call();
    }
    const auto grown = static_cast<double>(bytesInUse()) - static_cast<double>(before);
    std::cout << subject.code << ": " << count << " calls with result " << expected << " leave "
              << std::round(grown / static_cast<double>(count) * 10) / 10 << " bytes each\n";
    return grown / static_cast<double>(count);
}

constexpr double nothing = 0.5; // a buffer here or there, not once a call

} // namespace

TEST(Soak, SuccessfulCallsLeaveNothingButLoginSessions)
{
    const Responder responder(goodReplies());
    for (const Subject& subject : subjects()) {
        const double left = leftByEach(subject, calls / 2 / subjects().size(), subject.success);
        if (subject.code == "LS") {
            EXPECT_GT(left, sizeof(void*)) << "the session is left to the process";
            EXPECT_LT(left, 700);
        } else {
            EXPECT_LT(std::abs(left), nothing);
        }
    }
}

TEST(Soak, FailedCallsLeaveTheirException)
{
    auto replies = goodReplies();
    for (auto& [code, reply] : replies) {
        reply.back() ^= 1; // the CRC: the reply has been read to its end
    }
    const Responder responder(std::move(replies));
    for (const Subject& subject : subjects()) {
        const double left = leftByEach(subject, calls / 2 / subjects().size(), subject.failure);
        EXPECT_GT(left, sizeof(void*));
        EXPECT_LT(left, 40) << "and no more than that";
    }
}
