#pragma once

#include "text/Conversion.h"

#include <charconv>
#include <concepts>
#include <source_location>
#include <string>
#include <string_view>

// The operation log: one text for the process, with the lines of the latest call.
namespace Client {

std::string& operationLog();

inline void appendToLog(std::string_view text)
{
    operationLog().append(text);
}

inline void appendToLog(const char* text)
{
    appendToLog(Text::orEmpty(text));
}

void appendToLog(std::integral auto number)
{
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    appendToLog(std::string_view(digits, end));
}

// The first text of a log line, which also knows the source line that writes it.
class LogLabel
{
public:
    LogLabel(const char* label, std::source_location where = std::source_location::current())
        : text(label), line(where.line())
    {
    }
    LogLabel(const std::string& label, std::source_location where = std::source_location::current())
        : text(label), line(where.line())
    {
    }

    std::string_view text;
    std::uint_least32_t line;
};

// Writes one line: label and values, one after the other.
template <class... Values>
void log(LogLabel label, const Values&... values)
{
    appendToLog("[TarnRemoteClient:");
    appendToLog(label.line);
    appendToLog("] ");
    appendToLog(label.text);
    (appendToLog(values), ...);
    appendToLog("\n");
}

} // namespace Client
