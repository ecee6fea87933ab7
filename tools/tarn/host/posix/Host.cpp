#include "../../Host.h"

#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

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

bool writeAll(int terminal, const std::string& text)
{
    return write(terminal, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

std::optional<std::string> readLine(int terminal)
{
    std::string line;
    for (char byte = 0; read(terminal, &byte, 1) == 1;) {
        if (byte == '\n') {
            return line;
        }
        line += byte;
    }
    return std::nullopt;
}

} // namespace

void prepare() {}

std::vector<std::string> arguments(int argc, char** argv)
{
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

std::optional<std::string> environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

std::string systemText(const std::string& utf8)
{
    return utf8;
}

bool showsErrors()
{
    return isatty(STDERR_FILENO) == 1;
}

std::optional<std::string> ask(const std::string& question, Echo echo)
{
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (terminal < 0) {
        return std::nullopt;
    }
    // The echo goes first: a secret may be typed as soon as the question stands there.
    if (echo == Echo::hidden) {
        hideEcho(terminal);
    }
    std::optional<std::string> line;
    if (writeAll(terminal, question)) {
        line = readLine(terminal);
    }
    restoreEcho();
    close(terminal);
    return line;
}

void restoreEcho()
{
    if (hiddenTerminal < 0) {
        return;
    }
    tcsetattr(hiddenTerminal, TCSAFLUSH, &formerState);
    hiddenTerminal = -1;
}

} // namespace tarn::host
