// The contract of the platform seam, the same on both systems.
#include "platform/Platform.h"
#include "protocol/CommandInputSocket.h"
#include "protocol/CommandOutputSocket.h"
#include "support/Sockets.h"

#include <gtest/gtest.h>

#include <cerrno>

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#include <sys/time.h>
#endif

using namespace std::chrono_literals;

namespace {

struct Connection
{
    SOCKET listener = sockets::listenOn(0);
    std::int32_t ours = -1;
    SOCKET theirs = sockets::none;

    Connection()
    {
        EXPECT_EQ(Platform::startSockets(), 0);
        ours = Platform::createSocket();
        EXPECT_GT(ours, 0);
        EXPECT_TRUE(Platform::connectToLoopback(ours, sockets::portOf(listener)));
        theirs = sockets::acceptFrom(listener, 2000ms);
    }
    ~Connection()
    {
        Platform::closeSocket(ours);
        sockets::close(listener);
        Platform::cleanUpSockets();
    }
};

} // namespace

TEST(PlatformSockets, BytesBothWaysAndAnOrderlyEnd)
{
    Connection connection;
    int noDelay = 0;
    auto size = static_cast<socklen_t>(sizeof noDelay);
    getsockopt(static_cast<SOCKET>(connection.ours), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<char*>(&noDelay),
               &size);
    EXPECT_NE(noDelay, 0) << "without it each call waits for a delayed acknowledgement";
    errno = EINTR; // of somebody else's call
    EXPECT_EQ(Platform::sendBytes(connection.ours, "abc", 3), 3);
    const std::string large(100'000, 'l');
    EXPECT_EQ(Platform::sendBytes(connection.ours, large.data(), 100'000), 100'000);
    EXPECT_EQ(Platform::sendBytes(connection.ours, "d", 1), 1);
    sockets::sendAll(connection.theirs, "xy");
    char buffer[8];
    errno = EINTR;
    EXPECT_EQ(Platform::receiveBytes(connection.ours, buffer, 8), 2);
    std::string received;
    while (received.size() < 100'004 && sockets::receiveSome(connection.theirs, received, 500ms)) {
    }
    EXPECT_TRUE(received == "abc" + large + "d") << "in their order, and all of it once a reply is awaited";
    EXPECT_EQ(std::string(buffer, 2), "xy");
    sockets::close(connection.theirs);
    errno = EINTR;
    EXPECT_EQ(Platform::receiveBytes(connection.ours, buffer, 8), 0);
}

TEST(PlatformSockets, RefusedAndResetConnectionsAreToldNotRaised)
{
    const SOCKET listener = sockets::listenOn(0);
    const std::uint16_t port = sockets::portOf(listener);
    sockets::close(listener);
    ASSERT_EQ(Platform::startSockets(), 0);
    const std::int32_t socket = Platform::createSocket();
    EXPECT_FALSE(Platform::connectToLoopback(socket, port));
#ifdef _WIN32
    EXPECT_EQ(Platform::lastSocketError(), WSAECONNREFUSED);
#else
    EXPECT_EQ(Platform::lastSocketError(), ECONNREFUSED);
#endif
    Platform::closeSocket(socket);

    Connection connection;
    sockets::reset(connection.theirs);
#ifndef _WIN32 // Wine reports an orderly end
    char buffer[8];
    EXPECT_EQ(Platform::receiveBytes(connection.ours, buffer, 8), -1);
    EXPECT_EQ(Platform::lastSocketError(), ECONNRESET);
#endif
    const std::string large(100'000, 'l');
    Platform::sendBytes(connection.ours, "abc", 3);
    EXPECT_EQ(Platform::sendBytes(connection.ours, large.data(), 100'000), -1) << "and no signal ends the process";
#ifndef _WIN32
    errno = 0;
    EXPECT_EQ(Platform::receiveBytes(connection.ours, buffer, 8), -1) << "a reset keeps being reported";
    EXPECT_EQ(Platform::lastSocketError(), ECONNRESET);

    Merrow::CommandOutputSocket out(connection.ours);
    EXPECT_EQ(out.sendRaw("abc", 3), -1);
    out.writeInt(1); // shows when the reply is read
    Merrow::CommandInputSocket in(connection.ours);
    EXPECT_EQ(in.receiveRaw(buffer, 8), -1);
    EXPECT_EQ(in.readInt(), -1);
    EXPECT_TRUE(in.broken());
#endif
    Platform::cleanUpSockets();
}

TEST(PlatformText, CountsAndCapacities)
{
    WideChar wide[4];
    EXPECT_EQ(Platform::utf8ToWide("\xC3\x84", -1, nullptr, 0), 2) << "with the terminator";
    EXPECT_EQ(Platform::utf8ToWide("\xC3\x84", 2, nullptr, 0), 1);
    EXPECT_EQ(Platform::utf8ToWide("abcdef", -1, wide, 4), 0) << "too small";
    EXPECT_EQ(Platform::utf8ToWide("abc", 0, nullptr, 0), 0) << "nothing to convert";
    const WideChar lock[] = {0xD83D, 0xDD12, 0};
    char narrow[8];
    EXPECT_EQ(Platform::wideToUtf8(lock, 2, nullptr, 0), 4);
    EXPECT_EQ(Platform::wideToUtf8(lock, -1, narrow, 8), 5);
    EXPECT_STREQ(narrow, "\xF0\x9F\x94\x92");
}

#ifndef _WIN32
TEST(PlatformProcess, LaunchReportsFailuresUnderSignalsAndWithoutDescriptors)
{
    struct sigaction onAlarm
    {
    };
    onAlarm.sa_handler = [](int) {}; // without SA_RESTART: what it interrupts ends with EINTR
    sigaction(SIGALRM, &onAlarm, nullptr);
    const int next = dup(STDIN_FILENO);
    close(next);
    const itimerval often{.it_interval = {0, 200}, .it_value = {0, 200}};
    setitimer(ITIMER_REAL, &often, nullptr);
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(Platform::launchHidden("/no/such/program", ""), 2) << i;
    }
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    errno = EINTR; // of somebody else's call
    EXPECT_GT(Platform::launchHidden("/bin/true", ""), 32);

    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    for (const rlim_t left : {2u, 1u}) { // descriptors, where a launch needs three
        limit.rlim_cur = static_cast<rlim_t>(next) + left;
        setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_LE(Platform::launchHidden("/bin/true", ""), 32) << "whether it started is not known";
        EXPECT_EQ(dup(STDIN_FILENO), next) << "no descriptor is left open";
        close(next);
    }
}
#endif

#ifndef _WIN32
TEST(PlatformProcessDeathTest, LaunchReturnsToItsCaller)
{
    constexpr int returned = 42;
    EXPECT_EXIT(_exit(Platform::launchHidden("/bin/true", "") > 32 ? returned : 0), testing::ExitedWithCode(returned),
                "");
}
#endif

TEST(PlatformProcessDeathTest, TextThatDoesNotFitEndsTheProcessWithAnEmptyDestination)
{
    static char buffer[4] = "abc";
    Platform::copyOrEndProcess(buffer, 4, "xyz");
    EXPECT_STREQ(buffer, "xyz");
#ifndef _WIN32
    std::signal(SIGABRT, [](int) { _exit(buffer[0] == '\0' ? errno : 0); });
    EXPECT_EXIT(Platform::copyOrEndProcess(buffer, 4, "four"), testing::ExitedWithCode(ERANGE), "");
    EXPECT_EXIT(Platform::copyOrEndProcess(buffer, 1, "f"), testing::ExitedWithCode(ERANGE), "");
    EXPECT_EXIT(Platform::copyOrEndProcess(buffer, 0, ""), testing::ExitedWithCode(0), "") << "no room for anything";
    buffer[0] = '\0';
    EXPECT_EXIT(Platform::copyOrEndProcess(nullptr, 4, "x"), testing::ExitedWithCode(EINVAL), "");
#endif
}
