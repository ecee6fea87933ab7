// What breaks when the daemon's replies are damaged, cut off, or made to break us. Whatever comes, the call ends in its
// failure value (or in success, where the reply can be read as one), and the next call works.
#include "hostile/Subjects.h"
#include "support/Wire.h"

#include "TarnRemoteClient.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

using wire::int32;
using namespace std::string_literals;

namespace {

constexpr Manner kindly{.patience = patient};

// One for all tests of a process, as the library's connection is.
HostileDaemon& sharedDaemon()
{
    static HostileDaemon daemon;
    return daemon;
}

class Hostile : public testing::Test
{
protected:
    Hostile() { exchangeWell(); } // makes the connection, where there is none

    // A well-formed exchange on a connection that is in order.
    void exchangeWell()
    {
        const Subject& version = subjectOf("ST");
        ASSERT_EQ(daemon.answer(framed("ST", version.fields.bytes), version.call, kindly).result, 0);
    }

    // A reply that the call must refuse; then all is well on a fresh connection. Returns whether the call waited.
    bool expectFailure(const Subject& subject, const std::string& reply, const Manner& manner = {})
    {
        const Outcome outcome = daemon.answer(reply, subject.call, manner);
        EXPECT_EQ(outcome.result, subject.failure);
        EXPECT_NE(outcome.log.find("] " + subject.failureLine), std::string::npos) << outcome.log;
        daemon.renew();
        exchangeWell();
        return outcome.waited;
    }

    void expectSuccess(const Subject& subject, const std::string& reply, const Manner& manner = kindly)
    {
        const Outcome outcome = daemon.answer(reply, subject.call, manner);
        EXPECT_EQ(outcome.result, subject.success) << outcome.log;
        exchangeWell();
    }

    HostileDaemon& daemon = sharedDaemon();
};

class Reply : public Hostile, public testing::WithParamInterface<std::string>
{
protected:
    const Subject& subject = subjectOf(GetParam());
    const std::string good = framed(subject.code, subject.fields.bytes);
};

std::string withLength(std::string bytes, std::size_t at, std::int64_t length)
{
    return bytes.replace(at, 4, int32(length));
}

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

std::string codeOf(const testing::TestParamInfo<std::string>& test)
{
    return test.param;
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

INSTANTIATE_TEST_SUITE_P(All, Reply,
                         testing::Values("ST", "SD", "LS", "VC", "BE", "DE", "MI", "SI", "KV", "LT", "EP", "EU"),
                         codeOf);

TEST_P(Reply, InSinglePacketsOfOneByte)
{
    expectSuccess(subject, good, {.packet = 1, .pause = std::chrono::microseconds(500), .patience = patient});
}

TEST_P(Reply, EverySingleBitFlipped)
{
    std::size_t waits = 0;
    for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
        SCOPED_TRACE("bit " + std::to_string(bit));
        std::string reply = good;
        reply[bit / 8] = static_cast<char>(reply[bit / 8] ^ 0x80 >> bit % 8);
        const bool waited = expectFailure(subject, reply);
        const bool inHeadOrCrc = bit < 4 * 8 || bit >= (good.size() - 6) * 8;
        EXPECT_FALSE(waited && inHeadOrCrc) << "there is nothing to wait for";
        waits += waited;
        if (HasFailure()) {
            return;
        }
    }
    std::cout << subject.code << ": " << good.size() * 8 << " flips, of which " << waits
              << " made the call wait for more bytes until the reset\n";
}

TEST_P(Reply, CutOffAtEveryByte)
{
    for (std::size_t length = 0; length < good.size() && !HasFailure(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_TRUE(expectFailure(subject, good, {.resetAfter = length}));
    }
    std::cout << subject.code << ": " << good.size() << " cuts\n";
}

TEST_P(Reply, EveryLengthWrong)
{
    std::map<std::string, std::size_t> counts;
    for (const auto& [at, ignored] : subject.fields.lengths) {
        for (const std::int64_t length : {-1, 0, 1, INT32_MAX}) {
            SCOPED_TRACE("length " + std::to_string(length) + " at " + std::to_string(at));
            const std::string reply = framed(subject.code, withLength(subject.fields.bytes, at, length));
            if (!ignored) {
                ++counts[expectFailure(subject, reply) ? "waited" : "failed"];
                continue;
            }
            // A number is read by its own size, whatever its length says.
            EXPECT_EQ(daemon.answer(reply, subject.call, kindly).result, subject.success);
            exchangeWell();
            ++counts["succeeded"];
        }
    }
    std::cout << subject.code << ": " << subject.fields.lengths.size() << " lengths, 4 values each:";
    for (const auto& [what, count] : counts) {
        std::cout << ' ' << count << ' ' << what;
    }
    std::cout << '\n';
}

TEST_P(Reply, EveryParameterTwiceOrUnknown)
{
    expectSuccess(subject, framed(subject.code, subject.fields.bytes + subject.fields.bytes));
    expectSuccess(subject, framed(subject.code, times(10'000, parameter("st", "\1\1")) + subject.fields.bytes));
    expectFailure(subject, framed(subject.code, times(64 * 1024 / 6, parameter("zz", ""))));
    expectFailure(subject, framed(subject.code, subject.fields.bytes + parameter("zz", std::string(64 * 1024, '\0'))));
}

TEST_F(Hostile, NestedCollections)
{
    const std::string status = parameter("st", "\0\0"s);
    const std::string unknown = times(64 * 1024 / 6, parameter("zz", ""));
    const auto envelope = [&](const std::vector<std::string>& items) {
        return framed("BE", status + parameter("le", wire::sequence(items)));
    };
    const Subject& encrypt = subjectOf("BE");
    expectSuccess(encrypt, envelope({unknown, "", unknown}));
    const std::string names = parameter("rc", wire::sequence(std::vector<std::string>(50, "r@x")));
    expectSuccess(encrypt, envelope(std::vector<std::string>(2'000, names)));
    expectFailure(encrypt, envelope({parameter("le", "inner collection")}));
    std::string nested;
    for (int depth = 0; depth < 1'000; ++depth) {
        nested = wire::sequence({parameter("le", nested)});
    }
    expectFailure(encrypt, framed("BE", status + parameter("le", nested)));
    expectFailure(encrypt, framed("BE", status + parameter("le", int32(INT32_MAX) + names)));

    const std::string noRecipients = wire::sequence(std::vector<std::string>(10'000));
    expectSuccess(subjectOf("MI"), framed("MI", status + parameter("ri", noRecipients)));
    expectSuccess(subjectOf("DE"), framed("DE", status + parameter("da", noRecipients)));
}

TEST_F(Hostile, MapsOfOneMegabyte)
{
    const std::string status = parameter("st", "\0\0"s);
    std::vector<std::string> many;
    for (int i = 0; i < 40'000; ++i) {
        many.insert(many.end(), {"key " + std::to_string(i), "value"});
    }
    for (const std::string& map : {wire::sequence({"key", std::string(1 << 20, 'v')}), wire::sequence(many),
                                   times(131'072, int32(0) + int32(0))}) {
        expectSuccess(subjectOf("VC"), framed("VC", status + parameter("ec", map)));
        expectSuccess(subjectOf("LS"), framed("LS", status + parameter("sl", map)));
        expectSuccess(subjectOf("LT"), framed("LT", status + parameter("sl", map)));
        expectSuccess(subjectOf("EP"), framed("EP", status + parameter("al", map)));
        expectSuccess(subjectOf("MI"), framed("MI", status + parameter("ri", wire::sequence({parameter("da", map)}))));
        expectFailure(subjectOf("VC"), framed("VC", status + parameter("ec", map.substr(0, map.size() - 2))));
    }
}

// The call takes the first reply that is there for its own: what the daemon says unasked, the library cannot tell
// apart.
TEST_F(Hostile, TwoRepliesAtOnceAndOneUnasked)
{
    const Subject& version = subjectOf("ST");
    const auto reply = [](const char* name) { return framed("ST", parameter("st", "\0\0"s) + parameter("v ", name)); };
    const auto saysVersion = [](const Outcome& outcome, const std::string& name) {
        return outcome.result == 0 && outcome.log.find("] Version: " + name + "\n") != std::string::npos;
    };
    EXPECT_TRUE(saysVersion(daemon.answer(reply("first") + reply("second"), version.call, kindly), "first"));
    EXPECT_TRUE(saysVersion(daemon.answer("", version.call, kindly), "second"));
    exchangeWell();
    Manner early = kindly;
    early.early = true;
    EXPECT_TRUE(saysVersion(daemon.answer(reply("unasked"), version.call, early), "unasked"));
    exchangeWell();
    expectFailure(subjectOf("KV"), reply("of another command"), early);
}

TEST_F(Hostile, AClaimOfTwoGigabytesTouchesNone)
{
    const Subject& version = subjectOf("ST");
    const std::string claim = std::string("\0\7STv ", 6) + int32(INT32_MAX) + "7.6";
    std::ofstream("/proc/self/clear_refs") << 5; // the peak begins anew
    const std::size_t before = memory("VmHWM");
    const std::size_t spaceBefore = memory("VmPeak");
    const bool waited = expectFailure(version, claim);
    const std::size_t touched = memory("VmHWM") - before;
    const std::size_t space = memory("VmPeak") - spaceBefore;
    std::cout << "a claim of 2 GB: " << touched / 1024 << " kB of memory, " << space / (1024 * 1024)
              << " MB of address space\n";
    EXPECT_LT(touched, 1u << 20);
#ifdef __SANITIZE_ADDRESS__
    EXPECT_FALSE(waited) << "the block is refused";
#else
    EXPECT_TRUE(waited);
    EXPECT_GT(space, 1u << 30) << "the block was asked for";
#endif
}
