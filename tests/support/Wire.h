#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The tests' own view of the wire format. It shares no code with the library.
namespace wire {

using Params = std::vector<std::pair<std::string, std::string>>;

// An integer of `size` bytes, most significant first.
std::string integer(std::int64_t value, int size);
std::string shortInt(std::int64_t value);
std::string int32(std::int64_t value);
std::string int64(std::int64_t value);
std::string float64(double value);

// Texts one after the other, each preceded by its length: an array of strings, a map (keys and values in turn), or the
// items of a collection.
std::string sequence(const std::vector<std::string>& texts);

// Parameters without a frame around them, as an item of a collection holds them.
std::string parameters(const Params& params);

std::uint32_t crc(std::string_view bytes);

// A whole message: version, code, parameters, end marker, CRC. framed() takes any bytes, also ones that are not parameters.
std::string framed(std::string_view code, std::string_view parameterBytes);
std::string message(std::string_view code, const Params& params = {});

// How long the message at the front of `bytes` is, 0 when it is not complete yet.
std::size_t messageLength(std::string_view bytes);

} // namespace wire
