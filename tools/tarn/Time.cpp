#include "Time.h"

#include "Failure.h"
#include <array>
#include <charconv>
#include <chrono>
#include <ctime>
#include <date/date.h>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <string_view>

namespace tarn {

namespace {

using namespace std::chrono;

constexpr Milliseconds dayLength = 24LL * 60 * 60 * 1000;
// Calendar computations hold for the years 1 to 9999.
constexpr Milliseconds earliest = -719162 * dayLength;
constexpr Milliseconds latest = 2932897 * dayLength - 1;

Milliseconds now()
{
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

Milliseconds inMilliseconds(date::sys_seconds time)
{
    return milliseconds(time.time_since_epoch()).count();
}

std::optional<Milliseconds> fromLocal(date::local_seconds local)
{
    // What the system makes of it as a local time depends on its rules for that day.
    const std::time_t asUtc = local.time_since_epoch().count();
    const std::tm* calendar = std::gmtime(&asUtc);
    if (!calendar) {
        return std::nullopt;
    }
    std::tm fields = *calendar;
    fields.tm_isdst = -1;
    const std::time_t time = std::mktime(&fields);
    return time == -1 ? std::nullopt : std::optional<Milliseconds>(Milliseconds{time} * 1000);
}

std::optional<Milliseconds> parseOffset(std::string_view text)
{
    static const std::map<std::string_view, Milliseconds> units{
        {"m", 60'000}, {"h", 3'600'000}, {"d", dayLength}, {"w", 7 * dayLength}};
    Milliseconds count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    const auto unit = units.find(text.substr(static_cast<std::size_t>(end - text.data())));
    if (error != std::errc() || unit == units.end() || count < 0 || count > 1'000'000) {
        return std::nullopt;
    }
    return now() + count * unit->second;
}

std::optional<Milliseconds> parseCalendarTime(const std::string& text)
{
    static const std::regex form(R"((\d{4}-\d\d-\d\d)(?:[T ](\d\d:\d\d)(:\d\d)?(Z|[+-]\d\d:\d\d)?)?)");
    std::smatch parts;
    if (!std::regex_match(text, parts, form)) {
        return std::nullopt;
    }
    const auto part = [&parts](std::size_t index, const char* otherwise) {
        return parts[index].matched ? parts[index].str() : otherwise;
    };
    std::istringstream whole(part(1, "") + "T" + part(2, "00:00") + part(3, ":00") +
                             (parts[4] == "Z" ? "+00:00" : part(4, "")));
    if (parts[4].matched) {
        date::sys_seconds utc;
        return whole >> date::parse("%FT%T%Ez", utc) ? std::optional(inMilliseconds(utc)) : std::nullopt;
    }
    date::local_seconds local;
    return whole >> date::parse("%FT%T", local) ? fromLocal(local) : std::nullopt;
}

} // namespace

std::string localTime(Milliseconds date)
{
    if (date == 0) {
        return "-";
    }
    const auto seconds = static_cast<std::time_t>(date / 1000);
    const std::tm* fields = date < earliest || date > latest ? nullptr : std::localtime(&seconds);
    std::array<char, 32> text{};
    if (!fields || std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", fields) == 0) {
        return std::to_string(date);
    }
    return text.data();
}

nlohmann::json isoTime(Milliseconds date)
{
    if (date == 0 || date < earliest || date > latest) {
        return nullptr;
    }
    return date::format("%FT%TZ", date::sys_time<milliseconds>(milliseconds(date)));
}

Milliseconds parseTime(const std::string& text)
{
    const auto time = text.starts_with('+') ? parseOffset(std::string_view(text).substr(1)) : parseCalendarTime(text);
    if (!time) {
        throw Failure(Exit::usage, "\"" + text + "\" is not a time: give 2026-05-01, \"2026-05-01 14:30\", " +
                                       "2026-05-01T12:30:00Z or, from now, +90m, +12h, +7d or +2w");
    }
    return *time;
}

int localTimeZone()
{
    const std::time_t time = std::time(nullptr);
    std::tm utc = *std::gmtime(&time);
    utc.tm_isdst = std::localtime(&time)->tm_isdst;
    return static_cast<int>(std::difftime(time, std::mktime(&utc)) / 60);
}

} // namespace tarn
