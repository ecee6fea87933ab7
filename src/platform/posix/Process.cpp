#include "platform/Platform.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Platform {

namespace {

// The return values of the Windows call.
constexpr std::int32_t launchAccepted = 33;
constexpr std::int32_t noSuchProgram = 2;
constexpr std::int32_t accessDenied = 5;

std::string withoutQuotes(std::string_view text)
{
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        text = text.substr(1, text.size() - 2);
    }
    return std::string(text);
}

std::vector<std::string> splitAtBlanks(std::string_view text)
{
    std::vector<std::string> words;
    for (std::size_t start = text.find_first_not_of(' '); start != std::string_view::npos;) {
        const std::size_t end = text.find(' ', start);
        words.emplace_back(text.substr(start, end - start));
        start = text.find_first_not_of(' ', end);
    }
    return words;
}

// Runs in the forked process, where only async-signal-safe calls are allowed. The program gets a session of its own,
// none of our descriptors and no blocked signals. Returns only when it cannot be started.
int becomeProgram(const char* program, char* const* arguments, int report)
{
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int null = open("/dev/null", O_RDWR);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(null, descriptor);
    }
    constexpr unsigned firstOther = STDERR_FILENO + 1;
    const auto reportDescriptor = static_cast<unsigned>(report);
    close_range(firstOther, reportDescriptor - 1, 0);
    close_range(reportDescriptor + 1, ~0U, 0);
    execv(program, arguments);
    return errno;
}

// Starts the program as the child of a child that ends at once, so that no zombie is left to this process. Returns 0 or
// the error number. The pipe is closed when the program starts, which ends the reading.
int spawnDetached(const char* program, char* const* arguments)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    const int report = fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 2);
    if (report < 0) {
        const int error = errno;
        close(ends[0]);
        close(ends[1]);
        return error;
    }
    close(ends[1]);
    const pid_t child = fork();
    if (child == 0) {
        const pid_t grandchild = fork();
        if (grandchild <= 0) {
            const int error = grandchild == 0 ? becomeProgram(program, arguments, report) : errno;
            static_cast<void>(!write(report, &error, sizeof error));
        }
        _exit(0);
    }
    int error = child < 0 ? errno : 0;
    close(report);
    while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    while (read(ends[0], &error, sizeof error) < 0 && errno == EINTR) {
    }
    close(ends[0]);
    return error;
}

} // namespace

void prepareExceptions() {}

std::uint32_t lastError()
{
    return static_cast<std::uint32_t>(errno);
}

std::int32_t launchHidden(const char* program, const char* parameters)
{
    std::string path = withoutQuotes(program);
    // Anything else, a path of the other system among them, would be looked for in the current folder.
    if (!path.starts_with('/')) {
        return noSuchProgram;
    }
    std::vector<std::string> words = splitAtBlanks(parameters);
    std::vector<char*> arguments{path.data()};
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const int error = spawnDetached(path.c_str(), arguments.data());
    if (error == 0) {
        return launchAccepted;
    }
    return error == ENOENT || error == ENOTDIR ? noSuchProgram : accessDenied;
}

void copyOrEndProcess(char* destination, std::size_t size, const char* text)
{
    const std::size_t needed = std::strlen(text) + 1;
    if (destination != nullptr && needed <= size) {
        std::memcpy(destination, text, needed);
        return;
    }
    errno = destination == nullptr ? EINVAL : ERANGE;
    if (destination != nullptr && size > 0) {
        *destination = '\0';
    }
    std::abort();
}

} // namespace Platform
