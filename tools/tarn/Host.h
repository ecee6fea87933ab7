#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <tarn/Secret.h>
#include <vector>

// What differs between the systems. host/posix and host/windows define it.
namespace tarn::host {

// First thing in the program: makes standard input and output carry bytes as they are, and a console show UTF-8.
void prepare();

// The program's arguments in UTF-8, without its name.
std::vector<std::string> arguments(int argc, char** argv);

// The value of an environment variable, in UTF-8.
std::optional<Secret> environment(const std::string& name);

// A UTF-8 text in the encoding of the system's 8-bit calls.
std::string systemText(const std::string& utf8);

// A name in which letters that some file system treats as equal are equal.
std::string foldCase(const std::string& utf8);

// Moves a file to a name that is free; fails with errc::file_exists when it is not.
std::error_code renameUnlessTaken(const std::filesystem::path& from, const std::filesystem::path& to);

enum class Stream { output = 1, error = 2 };
bool isTerminal(Stream stream);

// Asks at the terminal itself, so standard input may be redirected. Nothing when there is no terminal, or at its end
// of input. What is typed to a hidden question is not shown.
enum class Echo { shown, hidden };
std::optional<Secret> ask(const std::string& question, Echo echo);

// The signals that ask the program to end.
std::span<const int> endingSignals();

// Calls `onFault` with the address when the program touches memory that it has no access to, and `onAbort`, where the
// system allows it, when the library ends the process. When they return, the program ends as it would have.
void watchFaults(void (*onFault)(const void* address), void (*onAbort)());

// These are safe in a signal handler. The first gives the terminal back what was changed of it: the echo while a hidden
// question is open, and a console's encoding.
void restoreTerminal();
void write(Stream stream, const char* text);

} // namespace tarn::host
