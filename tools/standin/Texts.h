#pragma once

#include <cstddef>
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

// The beginning of a UTF-8 text, of at most maxSize bytes, that does not end inside a character.
std::string_view cutText(std::string_view text, std::size_t maxSize);

std::string escapeHtml(std::string_view text);

} // namespace standin
