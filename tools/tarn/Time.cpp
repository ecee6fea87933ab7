#include "Time.h"

#include "Failure.h"
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <map>
#include <optional>
#include <string_view>

namespace tarn {

namespace {

using namespace std::chrono;

constexpr Milliseconds dayLength = 24LL * 60 * 60 * 1000;
// Calendar computations hold for the years 1 to 9999.
constexpr Milliseconds earliest = -719162 * dayLength;
constexpr Milliseconds latest = 2932897 * dayLength - 1;

Milliseconds inMilliseconds(sys_seconds time)
{
    return milliseconds(time.time_since_epoch()).count();
}

std::optional<Milliseconds> fromLocal(sys_seconds local)
{
    // What the system makes of it as a local time depends on its rules for that day.
    const std::time_t asUtc = system_clock::to_time_t(local);
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
    std::string shape = text;
    std::ranges::replace_if(
        shape, [](char one) { return one >= '0' && one <= '9'; }, '0');
    std::string_view rest = shape;
    const auto take = [&rest](std::string_view part) {
        const bool found = rest.starts_with(part);
        rest.remove_prefix(found ? part.size() : 0);
        return found;
    };
    const bool hasDate = take("0000-00-00");
    const bool hasTime = hasDate && (take("T00:00") || take(" 00:00"));
    if (hasTime) {
        take(":00");
    }
    const char* zone = text.c_str() + text.size() - rest.size();
    const bool isLocal = !hasTime || !(take("Z") || take("+00:00") || take("-00:00"));
    int year = 0, hour = 0, minute = 0, second = 0, offsetHour = 0, offsetMinute = 0;
    unsigned month = 0, day = 0;
    std::sscanf(text.c_str(), "%4d-%2u-%2u%*c%2d:%2d:%2d", &year, &month, &day, &hour, &minute, &second);
    std::sscanf(zone, "%*c%2d:%2d", &offsetHour, &offsetMinute);
    const year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    const bool inRange = hour < 24 && minute < 60 && second < 60 && offsetHour < 24 && offsetMinute < 60;
    if (!hasDate || !rest.empty() || !date.ok() || !inRange) {
        return std::nullopt;
    }
    const sys_seconds stated = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
    const auto offset = hours(offsetHour) + minutes(offsetMinute);
    return isLocal ? fromLocal(stated) : inMilliseconds(*zone == '-' ? stated + offset : stated - offset);
}

} // namespace

Milliseconds now()
{
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

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
    const sys_time<milliseconds> time{milliseconds(date)};
    const year_month_day day(floor<days>(time));
    const hh_mm_ss clock(time - floor<days>(time));
    const auto number = [](auto count) { return static_cast<int>(count); };
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", int{day.year()},
                  number(unsigned{day.month()}), number(unsigned{day.day()}), number(clock.hours().count()),
                  number(clock.minutes().count()), number(clock.seconds().count()), number(clock.subseconds().count()));
    return text.data();
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
