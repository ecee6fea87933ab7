#pragma once

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>

namespace Text {

// The decimal number at the start of a text: leading blanks are skipped, a sign is allowed, the rest is ignored; no
// digits give 0, a number out of range gives the nearest one in it.
template <class Integer>
Integer decimal(const std::string& text)
{
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<Integer>(
        std::clamp<long long>(value, std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max()));
}

} // namespace Text
