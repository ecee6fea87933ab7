#include "platform/Platform.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

extern char** environ;

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

// The program runs in the background, like a window-less process: in a session of its own and without our console.
int spawnDetached(const std::string& program, char* const* arguments)
{
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
    }
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t process = 0;
    const int error = posix_spawn(&process, program.c_str(), &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

std::uint32_t lastError()
{
    return static_cast<std::uint32_t>(errno);
}

std::int32_t launchHidden(const char* program, const char* parameters)
{
    std::string path = withoutQuotes(program);
    std::vector<std::string> words = splitAtBlanks(parameters);
    std::vector<char*> arguments{path.data()};
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const int error = spawnDetached(path, arguments.data());
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
