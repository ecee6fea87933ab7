// What the library makes of the system's answers: interrupted calls, partial sends, failures that do not come by
// themselves. The functions here stand in for the system's, for calls from the test's own thread; the scripted daemon's
// thread gets the real ones.
#include "client/DaemonConnection.h"
#include "platform/Platform.h"
#include "support/ExportTest.h"

#include <cerrno>
#include <deque>
#include <fcntl.h>
#include <netdb.h>
#include <sys/syscall.h>

namespace {

struct Answer
{
    std::string function;
    ssize_t count; // the bytes that a send or receive moves, -1 for a failure
    int error = 0;
};

std::deque<Answer> answers; // to the next calls, in turn; what they do not name goes to the system
std::vector<std::size_t> sendSizes;
std::vector<std::pair<int, int>> tcpOptions;

bool isTestThread()
{
    return getpid() == gettid();
}

// Whether the next answer is one for this function: then it is taken.
bool takeAnswer(const std::string& function, Answer& answer)
{
    if (!isTestThread() || answers.empty() || answers.front().function != function) {
        return false;
    }
    answer = answers.front();
    answers.pop_front();
    errno = answer.error;
    return true;
}

// Moves as many bytes as the next answer allows.
template <class Move>
ssize_t answered(const std::string& function, std::size_t count, Move move)
{
    Answer answer{};
    if (!takeAnswer(function, answer)) {
        return move(count);
    }
    return answer.count < 0 ? -1 : move(std::min(count, static_cast<std::size_t>(answer.count)));
}

} // namespace

extern "C" ssize_t send(int socket, const void* bytes, std::size_t count, int flags)
{
    if (isTestThread()) {
        sendSizes.push_back(count);
    }
    return answered("send", count,
                    [&](std::size_t most) { return syscall(SYS_sendto, socket, bytes, most, flags, nullptr, 0); });
}

extern "C" ssize_t recv(int socket, void* bytes, std::size_t count, int flags)
{
    return answered("recv", count, [&](std::size_t most) {
        return syscall(SYS_recvfrom, socket, bytes, most, flags, nullptr, nullptr);
    });
}

// An interrupted connect goes on by itself: the connection is made all the same.
extern "C" int connect(int socket, const sockaddr* address, socklen_t size)
{
    EXPECT_EQ(reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    Answer answer{};
    const bool fails = takeAnswer("connect", answer);
    if (fails && answer.error == ECONNREFUSED) {
        return -1;
    }
    const auto result = static_cast<int>(syscall(SYS_connect, socket, address, size));
    errno = fails ? answer.error : errno;
    return fails ? -1 : result;
}

extern "C" hostent* gethostbyname(const char* name)
{
    Answer answer{};
    return takeAnswer("gethostbyname", answer) ? nullptr : gethostbyname2(name, AF_INET);
}

extern "C" int socket(int domain, int type, int protocol)
{
    Answer answer{};
    return takeAnswer("socket", answer) ? -1 : static_cast<int>(syscall(SYS_socket, domain, type, protocol));
}

extern "C" int setsockopt(int socket, int level, int name, const void* value, socklen_t size)
{
    if (isTestThread() && level == IPPROTO_TCP) {
        tcpOptions.emplace_back(name, *static_cast<const int*>(value));
    }
    return static_cast<int>(syscall(SYS_setsockopt, socket, level, name, value, size));
}

// The platform's own function, in whose place another system answers what POSIX never does.
extern "C" std::int32_t __real__ZN8Platform12launchHiddenEPKcS1_(const char* program, const char* parameters);
extern "C" std::int32_t __wrap__ZN8Platform12launchHiddenEPKcS1_(const char* program, const char* parameters)
{
    Answer answer{};
    return takeAnswer("launch", answer) ? static_cast<std::int32_t>(answer.count)
                                        : __real__ZN8Platform12launchHiddenEPKcS1_(program, parameters);
}

using Options = std::vector<std::pair<int, int>>;

TEST_F(ExportTest, EachPrimitiveWriteIsOneSendOfTheSystemAndTheKernelHoldsThemTogether)
{
    learnVersion();
    EXPECT_EQ(sendSizes, (std::vector<std::size_t>{2, 2, 2, 4})) << "version, code, end marker, CRC";
    EXPECT_EQ(tcpOptions, (Options{{TCP_NODELAY, 1}, {TCP_CORK, 1}, {TCP_CORK, 0}}));
    learnVersion();
    EXPECT_EQ(tcpOptions.size(), 5u);
    daemon.play(wire::message("SD"));
    StopTarnDaemon(log);

    for (int twice = 0; twice < 2; ++twice) {
        tcpOptions.clear();
        const std::int32_t socket = Platform::createSocket();
        ASSERT_TRUE(Platform::connectToLoopback(socket, 53007));
        errno = EINTR;
        EXPECT_EQ(Platform::sendBytes(socket, "", 0), 0) << "an earlier call's error is not looked at";
        Platform::sendBytes(socket, "a", 1);
        Platform::closeSocket(socket);
        EXPECT_EQ(tcpOptions, (Options{{TCP_NODELAY, 1}, {TCP_CORK, 1}}))
            << "the number of a closed socket comes again";
    }
}

TEST_F(ExportTest, InterruptedAndPartialCallsGoOn)
{
    answers = {{"connect", -1, EINTR}, {"connect", -1, EALREADY}, {"send", -1, EINTR}, {"send", 1}, {"send", 1},
               {"recv", -1, EINTR},    {"recv", -1, EINTR},       {"recv", 1}};
    learnVersion();
    EXPECT_TRUE(answers.empty());
    EXPECT_EQ(request(0), wire::message("ST"));
}

TEST_F(ExportTest, FailuresOfTheSystemFailTheCallAndAreNamed)
{
    Output<char> version;
    const std::string failure = "Unexpected exception occured. GetLastError() : ";
    answers = {{"connect", -1, ECONNREFUSED}};
    EXPECT_EQ(GetTarnVersion(version, log), -1);
    EXPECT_EQ(lines(), Lines{failure + std::to_string(ECONNREFUSED)});
    answers = {{"connect", -1, ECONNREFUSED}};
    try {
        Client::connectToDaemon();
        ADD_FAILURE() << "connected";
    } catch (const char* text) {
        EXPECT_EQ(text, "Failed to connect - " + std::to_string(ECONNREFUSED));
    }
    answers = {{"gethostbyname", -1, ENETDOWN}};
    EXPECT_EQ(GetTarnVersion(version, log), -1);
    EXPECT_EQ(lines(), Lines{failure + std::to_string(ENETDOWN)});
    answers = {{"socket", -1, EMFILE}};
    EXPECT_EQ(GetTarnVersion(version, log), -1);
    EXPECT_EQ(lines(), Lines{failure + std::to_string(EBADF)});
    answers = {{"launch", 32}};
    EXPECT_EQ(StartTarnDaemon("", log), 0u) << "33 is the least that succeeds";
    learnVersion();
    answers = {{"recv", -1, ENOBUFS}};
    daemon.play(wire::message("ST"));
    EXPECT_EQ(GetTarnVersion(version, log), -1);
    EXPECT_EQ(lines().back(), failure + std::to_string(ENOBUFS));
}

TEST(Socket, IsNeverNumberZeroAndIsNotInherited)
{
    for (int twice = 0; twice < 2; ++twice) {
        const std::int32_t socket = Platform::createSocket();
        EXPECT_GT(socket, 0);
        EXPECT_EQ(fcntl(socket, F_GETFD), FD_CLOEXEC);
        close(STDIN_FILENO); // so that the next one would get its number
    }
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "and none is left open under it";
}
