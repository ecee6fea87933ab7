#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

// What each fuzz target defines.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

// Inputs to begin from: well-formed ones, from which mutation goes on.
std::vector<std::string> seedInputs();

// What must hold for every input. Ends the process where it does not, which is a finding.
inline void demand(bool holds, const char* property)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", property);
        std::abort();
    }
}

inline std::string_view viewOf(const std::uint8_t* bytes, std::size_t size)
{
    return {reinterpret_cast<const char*>(bytes), size};
}
