// What breaks when the daemon's replies are damaged, cut off, or made to break us. Whatever comes, the call ends in its
// failure value (or in success, where the reply can be read as one), and the next call on a fresh connection
// works.
#include "support/ReplyCase.h"
#include "support/ScriptedDaemon.h"
#include "support/Wire.h"

#include "TarnRemoteClient.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>

using wire::framed;
using wire::int32;
using namespace std::string_literals;

#ifdef TARN_SANITIZED
// The sanitizer keeps a record of each block, an eighth of its size, which would take most of the time here. So it
// refuses the largest ones: that, too, must end in a failed call.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options()
{
    return "max_allocation_size_mb=128:allocator_may_return_null=1";
}
#endif

namespace {

class Hostile : public testing::Test
{
protected:
    Hostile()
    {
        exchangeWell(); // makes the connection
        const std::string label = "Got socket: ";
        const std::string text = log_.data();
        socket_ = std::stoi(text.substr(text.find(label) + label.size()));
    }
    ~Hostile() override { exchangeWell(); }

    void exchangeWell() { expectSuccess(replyCaseOf("GetTarnVersion"), replyCaseOf("GetTarnVersion").goodReply()); }

    void expectSuccess(const ReplyCase& one, const std::string& reply)
    {
        daemon_.play(reply);
        EXPECT_EQ(one.call(log_.data()), one.success) << log_.data();
    }

    // A reply that the call must refuse; a reset follows it. Returns whether the call waited for more than there was.
    bool expectFailure(const ReplyCase& one, const std::string& reply)
    {
        daemon_.play(reply, {.resetAfter = reply.size()});
        errno = 0;
        const std::int32_t result = one.call(log_.data());
        const bool waited = errno == ECONNRESET;
        EXPECT_EQ(result, one.failure);
        EXPECT_TRUE(one.failureLine.empty() || std::strstr(log_.data(), one.failureLine.c_str())) << log_.data();
        reconnect();
        return waited;
    }

private:
    // The library never replaces its connection itself: a fresh one takes the broken one's number.
    void reconnect() const
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(53007);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const SOCKET fresh = socket(AF_INET, SOCK_STREAM, 0);
        if (connect(fresh, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            dup2(fresh, socket_) < 0) {
            throw std::runtime_error("set-up failure: no fresh connection");
        }
        sockets::close(fresh);
    }

    ScriptedDaemon daemon_;
    std::vector<char> log_ = std::vector<char>(TARN_LOG_SIZE);
    int socket_ = -1;
};

class Reply : public Hostile, public testing::WithParamInterface<ReplyCase>
{
protected:
    const ReplyCase& kind = GetParam();
    const std::string good = kind.goodReply();
};

std::string times(std::size_t count, const std::string& text)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string parameter(const std::string& tag, const std::string& value)
{
    return wire::parameters({{tag, value}});
}

// A figure of this process, in bytes.
std::size_t memory(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (std::size_t kilobytes = 0; word == name + ":" && status >> kilobytes) {
            return kilobytes * 1024;
        }
    }
    throw std::runtime_error("set-up failure: no " + name);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(All, Reply, testing::ValuesIn(replyCases()), [](const auto& test) { return test.param.name; });

TEST_P(Reply, SingleBitsFlippedInEveryByte)
{
    // Every third bit: two or three of each byte, and each place in the byte in turn.
    for (std::size_t bit = 0; bit < good.size() * 8 && !HasFailure(); bit += 3) {
        SCOPED_TRACE("bit " + std::to_string(bit));
        std::string reply = good;
        reply[bit / 8] = static_cast<char>(reply[bit / 8] ^ 0x80 >> bit % 8);
        const bool waited = expectFailure(kind, reply);
        const bool inHeadOrCrc = bit < 4 * 8 || bit >= (good.size() - 6) * 8;
        EXPECT_FALSE(waited && inHeadOrCrc) << "there is nothing to wait for";
    }
}

TEST_P(Reply, CutOffAtEveryByte)
{
    for (std::size_t length = 0; length < good.size() && !HasFailure(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_TRUE(expectFailure(kind, good.substr(0, length)));
    }
}

TEST_P(Reply, EveryParameterTwiceOrUnknown)
{
    const std::string fields = wire::parameters(kind.fields);
    expectSuccess(kind, framed(kind.code, fields + fields));
    expectSuccess(kind, framed(kind.code, times(10'000, parameter("st", "\1\1")) + fields));
    expectFailure(kind, framed(kind.code, times(64 * 1024 / 6, parameter("zz", ""))));
    expectFailure(kind, framed(kind.code, fields + parameter("zz", std::string(64 * 1024, '\0'))));
}

TEST_F(Hostile, AClaimOfTwoGigabytesTouchesNone)
{
    std::ofstream("/proc/self/clear_refs") << 5; // the peak begins anew
    const std::size_t before = memory("VmHWM");
    const std::size_t spaceBefore = memory("VmPeak");
    const bool waited = expectFailure(replyCaseOf("GetTarnVersion"), "\0\7STv "s + int32(INT32_MAX) + "7.6");
    EXPECT_LT(memory("VmHWM") - before, 1u << 20);
#ifdef TARN_SANITIZED
    EXPECT_FALSE(waited) << "the block is refused";
    static_cast<void>(spaceBefore);
#else
    EXPECT_TRUE(waited);
    EXPECT_GT(memory("VmPeak") - spaceBefore, 1u << 30) << "the block was asked for";
#endif
}
