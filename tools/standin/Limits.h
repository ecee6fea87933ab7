#pragma once

#include <cstddef>

// How much of a text the daemon takes and passes on. Callers copy replies into buffers and into a log of 32 KiB, and
// the larger a reply may be, the larger these have to be.
namespace standin::limit {

inline constexpr std::size_t text = 8'000; // where nothing else is said
inline constexpr std::size_t password = 511;
inline constexpr std::size_t address = 320;
inline constexpr std::size_t recipients = 200;
inline constexpr std::size_t subject = 1'000;
inline constexpr std::size_t statusMessage = 1'000;
inline constexpr std::size_t configuration = 8'000; // of a message, as a map on the wire
inline constexpr std::size_t configurationFile = std::size_t{1} << 20;
inline constexpr std::size_t configurationLine = 1'000;
inline constexpr std::size_t problems = 50; // that a check names one by one
inline constexpr std::size_t request = std::size_t{256} << 20;
inline constexpr std::size_t parameters = 100'000;
inline constexpr std::size_t mapEntries = 100'000;

} // namespace standin::limit
