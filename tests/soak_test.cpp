// What the process keeps when calls go on and on: nothing, but for the objects that the library leaves to it.
#include "support/ReplyCase.h"
#include "support/ScriptedDaemon.h"

#include "TarnRemoteClient.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#ifdef TARN_SANITIZED
#include <sanitizer/allocator_interface.h>
#else
#include <malloc.h>
#endif

namespace {

constexpr std::size_t calls = 10'000;

// What the program has allocated and not freed.
std::size_t bytesInUse()
{
#ifdef TARN_SANITIZED
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

std::map<std::string, std::string> goodReplies()
{
    std::map<std::string, std::string> replies;
    for (const ReplyCase& kind : replyCases()) {
        replies[kind.code] = kind.goodReply();
    }
    return replies;
}

// Lets one kind of call go on; returns what each has left behind, in bytes.
double leftByEach(const ReplyCase& kind, std::size_t count, std::int32_t expected)
{
    static std::vector<char> log(TARN_LOG_SIZE);
    const auto call = [&] { ASSERT_EQ(kind.call(log.data()), expected) << log.data(); };
    for (int warmUp = 0; warmUp < 50; ++warmUp) {
        call();
    }
    const std::size_t before = bytesInUse();
    for (std::size_t i = 0; i < count && !testing::Test::HasFailure(); ++i) {
        call();
    }
    const auto grown = static_cast<double>(bytesInUse()) - static_cast<double>(before);
    std::cout << kind.name << ": " << count << " calls with result " << expected << " leave "
              << std::round(grown / static_cast<double>(count) * 10) / 10 << " bytes each\n";
    return grown / static_cast<double>(count);
}

constexpr double nothing = 0.5; // a buffer here or there, not once a call

} // namespace

TEST(Soak, SuccessfulCallsLeaveNothingButLoginSessions)
{
    ScriptedDaemon daemon;
    daemon.answerAll(goodReplies());
    for (const ReplyCase& kind : replyCases()) {
        const double left = leftByEach(kind, calls / 2 / replyCases().size(), kind.success);
        if (kind.name == "AuthenticateUser") {
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
    ScriptedDaemon daemon;
    daemon.answerAll(std::move(replies));
    for (const ReplyCase& kind : replyCases()) {
        const double left = leftByEach(kind, calls / 2 / replyCases().size(), kind.failure);
        EXPECT_GT(left, sizeof(void*));
        EXPECT_LT(left, 40) << "and no more than that";
    }
}
