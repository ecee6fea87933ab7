#pragma once

#include <optional>
#include <string>
#include <vector>

// What differs between the systems. host/posix and host/windows define it.
namespace tarn::host {

// Makes standard input and output carry bytes as they are, and a console show UTF-8.
void prepare();

// The program's arguments in UTF-8, without its name.
std::vector<std::string> arguments(int argc, char** argv);

// The value of an environment variable in UTF-8.
std::optional<std::string> environment(const char* name);

// A UTF-8 text in the encoding of the system's 8-bit calls.
std::string systemText(const std::string& utf8);

// Whether a person sees standard error.
bool showsErrors();

// Asks at the terminal itself, so standard input may be redirected. Nothing when there is no terminal, or at its end
// of input. What is typed to a hidden question is not shown.
enum class Echo { shown, hidden };
std::optional<std::string> ask(const std::string& question, Echo echo);

// Gives the terminal its echo back when a hidden question is open. Safe in a signal handler.
void restoreEcho();

} // namespace tarn::host
