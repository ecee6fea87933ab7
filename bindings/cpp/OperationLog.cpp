#include "OperationLog.h"

#include <TarnRemoteClient.h>
#include <algorithm>
#include <charconv>
#include <tarn/Errors.h>

namespace tarn::detail {

namespace {

constexpr std::string_view linePrefix = "[TarnRemoteClient:";

// These may write no line between connecting and reading the reply, or have no log.
constexpr std::string_view silentFunctions[] = {"GetPayloadStatus", "SetRecipientEntries", "GetSupportedLocales",
                                                "GetLocalizedMessageBody"};

// What follows the first line start that has this label; npos without one.
std::size_t afterLabel(std::string_view log, std::string_view label)
{
    for (std::size_t line = 0; line < log.size(); line = std::min(log.find('\n', line), log.size() - 1) + 1) {
        const auto text = log.find("] ", line);
        if (log.substr(line).starts_with(linePrefix) && text != log.npos && log.substr(text + 2).starts_with(label)) {
            return text + 2 + label.size();
        }
    }
    return log.npos;
}

} // namespace

LogLoad::LogLoad(std::initializer_list<std::string_view> texts)
{
    for (const auto text : texts) {
        add(text);
    }
}

LogLoad& LogLoad::add(const std::vector<std::string>& texts)
{
    for (const auto& text : texts) {
        add(text);
    }
    return *this;
}

LogLoad& LogLoad::addLines(std::size_t count, std::size_t textSize)
{
    bytes_ += count * (TARN_LOG_LINE_SIZE + textSize);
    return *this;
}

void LogLoad::check(const char* function) const
{
    if (bytes_ + TARN_LOG_RESERVE > TARN_LOG_SIZE) {
        throw LogTooSmall("too much for one " + std::string(function) + ": its operation log could take " +
                          std::to_string(bytes_ + TARN_LOG_RESERVE) + " bytes and can hold " +
                          std::to_string(TARN_LOG_SIZE));
    }
}

bool tellsStatus(std::string_view log, std::int32_t status)
{
    return afterLabel(log, "Status code: " + std::to_string(status) + "\n") != log.npos;
}

std::int32_t numberAfter(std::string_view log, std::string_view label)
{
    std::int32_t number = -1;
    if (const auto start = afterLabel(log, label); start != log.npos) {
        std::from_chars(log.data() + start, log.data() + log.size(), number);
    }
    return number;
}

std::string statusMessage(std::string_view log)
{
    const auto start = afterLabel(log, "Status message:");
    if (start == log.npos) {
        return "";
    }
    // The message follows its label or is on lines of its own below it.
    const auto end = log.find("\n" + std::string(linePrefix), start);
    const std::string_view message = log.substr(start, end == log.npos ? end : end - start);
    const auto first = message.find_first_not_of(" \n");
    if (first == message.npos) {
        return "";
    }
    return std::string(message.substr(first, message.find_last_not_of(" \n") + 1 - first));
}

bool tellsNoConnection(std::string_view function, std::string_view log)
{
    if (std::ranges::find(silentFunctions, function) != std::end(silentFunctions)) {
        return false;
    }
    // Only the failure's line, and before it at most one that names the call.
    const std::string_view firstLine = log.substr(0, log.find('\n'));
    if (firstLine.ends_with(" is called.")) {
        log.remove_prefix(firstLine.size() + 1);
    }
    return std::ranges::count(log, '\n') == 1;
}

} // namespace tarn::detail
