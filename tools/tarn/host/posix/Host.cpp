#include "../../Host.h"

#include "../../Text.h"
#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#include <utf8.h>

namespace tarn::host {

namespace {

termios formerState;
volatile int hiddenTerminal = -1; // the terminal whose echo is off

void hideEcho(int terminal)
{
    if (tcgetattr(terminal, &formerState) != 0) {
        return;
    }
    termios hidden = formerState;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    hidden.c_lflag |= ECHONL;
    hiddenTerminal = terminal;
    tcsetattr(terminal, TCSAFLUSH, &hidden);
}

std::optional<Secret> readLine(int terminal)
{
    ClearedVector<char> line;
    for (char byte = 0; read(terminal, &byte, 1) == 1; line.push_back(byte)) {
        if (byte == '\n') {
            return Secret(std::string_view(line.data(), line.size()));
        }
    }
    return std::nullopt;
}

} // namespace

// A closed standard descriptor would be given to the next thing opened, and the output written into that. What takes
// its place fails when it is read from or written to.
void prepare()
{
    for (const auto& [descriptor, mode] :
         {std::pair(STDIN_FILENO, O_WRONLY), {STDOUT_FILENO, O_RDONLY}, {STDERR_FILENO, O_RDONLY}}) {
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", mode) != descriptor) {
            std::_Exit(EXIT_FAILURE);
        }
    }
}

std::vector<std::string> arguments(int argc, char** argv)
{
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

std::optional<Secret> environment(const std::string& name)
{
    const char* value = std::getenv(name.c_str());
    return value ? std::optional<Secret>(value) : std::nullopt;
}

std::string systemText(const std::string& utf8)
{
    return utf8;
}

// Most file systems that ignore case compare the upper-case form of each letter by itself.
std::string foldCase(const std::string& utf8)
{
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    static const locale_t locale = unicode ? unicode : newlocale(LC_CTYPE_MASK, "C", nullptr);
    std::u32string characters = toCharacters(utf8);
    for (auto& character : characters) {
        character = static_cast<char32_t>(towupper_l(static_cast<wint_t>(character), locale));
    }
    return utf8::utf32to8(characters);
}

std::error_code renameUnlessTaken(const std::filesystem::path& from, const std::filesystem::path& to)
{
    bool done = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
    if (!done && (errno == EINVAL || errno == ENOSYS)) { // a file system without this, but perhaps with hard links
        done = link(from.c_str(), to.c_str()) == 0 && unlink(from.c_str()) == 0;
    }
    return done ? std::error_code() : std::error_code(errno, std::generic_category());
}

bool isTerminal(Stream stream)
{
    return isatty(static_cast<int>(stream)) == 1;
}

std::optional<Secret> ask(const std::string& question, Echo echo)
{
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (terminal < 0) {
        return std::nullopt;
    }
    // The echo goes first: a secret may be typed as soon as the question is shown.
    if (echo == Echo::hidden) {
        hideEcho(terminal);
    }
    const bool asked = ::write(terminal, question.data(), question.size()) == static_cast<ssize_t>(question.size());
    auto line = asked ? readLine(terminal) : std::nullopt;
    restoreTerminal();
    close(terminal);
    return line;
}

std::span<const int> endingSignals()
{
    static constexpr std::array signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};
    return signals;
}

void watchFaults(void (*onFault)(const void* address), void (*onAbort)())
{
    static void (*fault)(const void*);
    static void (*aborted)();
    fault = onFault;
    aborted = onAbort;
    struct sigaction action = {};
    action.sa_flags = static_cast<int>(SA_SIGINFO | SA_RESETHAND);
    action.sa_sigaction = [](int, siginfo_t* info, void*) { fault(info->si_addr); };
    sigaction(SIGSEGV, &action, nullptr);
    sigaction(SIGBUS, &action, nullptr);
    action.sa_sigaction = [](int, siginfo_t*, void*) { aborted(); };
    sigaction(SIGABRT, &action, nullptr);
}

void write(Stream stream, const char* text)
{
    [[maybe_unused]] const auto written = ::write(static_cast<int>(stream), text, std::strlen(text));
}

void restoreTerminal()
{
    if (hiddenTerminal < 0) {
        return;
    }
    tcsetattr(hiddenTerminal, TCSAFLUSH, &formerState);
    hiddenTerminal = -1;
}

} // namespace tarn::host
