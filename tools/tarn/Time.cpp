#include "Time.h"

#include "Failure.h"
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string_view>

namespace tarn {

namespace {

using namespace std::chrono;

constexpr Milliseconds daysToMilliseconds = 24LL * 60 * 60 * 1000;
// Calendar computations hold for the years 1 to 9999.
constexpr Milliseconds earliest = -719162 * daysToMilliseconds;
constexpr Milliseconds latest = 2932897 * daysToMilliseconds - 1;

Milliseconds now()
{
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

struct CalendarTime
{
    year_month_day date;
    int hour = 0, minute = 0, second = 0;

    Milliseconds asUtc() const
    {
        const auto time = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
        return duration_cast<milliseconds>(time.time_since_epoch()).count();
    }

    std::optional<Milliseconds> asLocal() const
    {
        std::tm fields{};
        fields.tm_year = static_cast<int>(date.year()) - 1900;
        fields.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
        fields.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
        fields.tm_hour = hour;
        fields.tm_min = minute;
        fields.tm_sec = second;
        fields.tm_isdst = -1;
        const std::time_t time = std::mktime(&fields);
        return time == -1 ? std::nullopt : std::optional<Milliseconds>(Milliseconds{time} * 1000);
    }
};

// Reads a text from the left; once something does not match, `good` is false.
class Reader
{
public:
    explicit Reader(std::string_view text) : rest(text) {}

    int number(std::size_t digits)
    {
        int value = 0;
        if (rest.size() < digits || rest.substr(0, digits).find_first_not_of("0123456789") != rest.npos) {
            good = false;
            return 0;
        }
        std::from_chars(rest.data(), rest.data() + digits, value);
        rest.remove_prefix(digits);
        return value;
    }

    bool take(std::string_view anyOf)
    {
        if (rest.empty() || anyOf.find(rest.front()) == anyOf.npos)
            return false;
        rest.remove_prefix(1);
        return true;
    }

    void demand(std::string_view anyOf) { good = take(anyOf) && good; }

    std::string_view rest;
    bool good = true;
};

std::optional<Milliseconds> parseOffset(std::string_view text)
{
    Milliseconds count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc() || end + 1 != text.data() + text.size() || count < 0 || count > 1'000'000)
        return std::nullopt;
    switch (*end) {
    case 'm':
        return now() + count * 60'000;
    case 'h':
        return now() + count * 3'600'000;
    case 'd':
        return now() + count * daysToMilliseconds;
    case 'w':
        return now() + count * 7 * daysToMilliseconds;
    default:
        return std::nullopt;
    }
}

std::optional<Milliseconds> parseCalendarTime(std::string_view text)
{
    Reader reader(text);
    const auto yearNumber = reader.number(4);
    reader.demand("-");
    const auto monthNumber = static_cast<unsigned>(reader.number(2));
    reader.demand("-");
    const auto dayNumber = static_cast<unsigned>(reader.number(2));
    CalendarTime time{year(yearNumber) / month(monthNumber) / day(dayNumber)};
    if (reader.take("T ")) {
        time.hour = reader.number(2);
        reader.demand(":");
        time.minute = reader.number(2);
        if (reader.take(":"))
            time.second = reader.number(2);
    }
    if (!reader.good || !time.date.ok() || time.hour > 23 || time.minute > 59 || time.second > 59)
        return std::nullopt;
    if (reader.rest.empty())
        return time.asLocal();
    if (reader.rest == "Z")
        return time.asUtc();

    const bool east = reader.rest.front() == '+';
    reader.demand("+-");
    const int zoneHours = reader.number(2);
    reader.demand(":");
    const Milliseconds zone = (zoneHours * 60 + reader.number(2)) * 60'000LL;
    if (!reader.good || !reader.rest.empty())
        return std::nullopt;
    return east ? time.asUtc() - zone : time.asUtc() + zone;
}

} // namespace

std::string localTime(Milliseconds date)
{
    if (date == 0)
        return "-";
    const auto seconds = static_cast<std::time_t>(date / 1000);
    const std::tm* fields = date < earliest || date > latest ? nullptr : std::localtime(&seconds);
    std::array<char, 32> text{};
    if (!fields || std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", fields) == 0)
        return std::to_string(date);
    return text.data();
}

nlohmann::json isoTime(Milliseconds date)
{
    if (date == 0 || date < earliest || date > latest)
        return nullptr;
    const sys_time<milliseconds> time{milliseconds(date)};
    const auto dayOf = floor<days>(time);
    const year_month_day calendar(dayOf);
    const hh_mm_ss clock(time - dayOf);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(calendar.year()),
                  static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
    return text.data();
}

Milliseconds parseTime(const std::string& text)
{
    const auto time = text.starts_with('+') ? parseOffset(std::string_view(text).substr(1)) : parseCalendarTime(text);
    if (!time)
        throw Failure(Exit::usage, "\"" + text + "\" is no time: give 2026-05-01, \"2026-05-01 14:30\", " +
                                       "2026-05-01T12:30:00Z or, from now, +90m, +12h, +7d or +2w");
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
