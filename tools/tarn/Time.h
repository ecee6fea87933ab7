#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace tarn {

// The dates of tracking records: milliseconds since 1970-01-01 UTC, 0 for "not set".
using Milliseconds = std::int64_t;
Milliseconds now();

// Local time for people, "-" for 0.
std::string localTime(Milliseconds date);

// UTC for scripts, such as "2026-05-01T12:00:00.000Z"; null for 0.
nlohmann::json isoTime(Milliseconds date);

// Reads "2026-05-01", "2026-05-01 14:30[:15]" ("T" for the blank allowed) in local time, the same with "Z" or "+02:00"
// after it, and "+90m", "+12h", "+7d", "+2w" from now.
Milliseconds parseTime(const std::string& text);

// Minutes that local time is east of UTC now.
int localTimeZone();

} // namespace tarn
