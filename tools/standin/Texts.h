#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace standin {

// Milliseconds since 1970 UTC, the unit of all dates of the protocol.
std::int64_t nowMillis();

// Without blanks around it.
std::string_view trimmed(std::string_view text);

// Addresses are compared without regard to case and blanks around them.
std::string normalAddress(std::string_view address);
// something@something, without blanks, control characters or the separators of address lists.
bool isAddress(std::string_view address);

std::string escapeHtml(std::string_view text);

} // namespace standin
