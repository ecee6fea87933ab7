#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::detail {

// How much of the operation log the texts of a call take: those that the library logs, those that it does not log but the
// daemon's message may quote, and those texts of the reply that can be counted before. A message of more than about
// TARN_LOG_RESERVE is not covered.
class LogLoad
{
public:
    LogLoad() = default;
    LogLoad(std::initializer_list<std::string_view> texts);

    LogLoad& add(std::string_view text) { return addLines(1, text.size()); }
    LogLoad& add(const std::vector<std::string>& texts);
    LogLoad& addLines(std::size_t count, std::size_t textSize = 0);

    // Throws a LogTooSmall when the log could outgrow its buffer, which would end the process.
    void check(const char* function) const;

private:
    std::size_t bytes_ = 0;
};

// What the library writes of a reply's status, before any text of that reply.
bool tellsStatus(std::string_view log, std::int32_t status);

// The number after a label that starts a line, -1 without one.
std::int32_t numberAfter(std::string_view log, std::string_view label);

// The daemon's status message, empty when there is none.
std::string statusMessage(std::string_view log);

// Whether the log of a failed call shows that it had not even connected.
bool tellsNoConnection(std::string_view function, std::string_view log);

} // namespace tarn::detail
