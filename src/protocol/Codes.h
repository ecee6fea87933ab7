#pragma once

#include <cstdint>

namespace Merrow {

using Tag = std::uint16_t;

// Two-letter command codes and parameter tags: two ASCII characters, the first in the high byte.
consteval Tag tag(const char (&letters)[3])
{
    return static_cast<Tag>(letters[0] << 8 | letters[1]);
}

consteval Tag code(const char (&letters)[3])
{
    return tag(letters);
}

inline constexpr std::uint16_t protocolVersion = 7;

// Comes in the place of a tag and ends the parameters.
inline constexpr Tag endMarker = 0xCEDE;

} // namespace Merrow
