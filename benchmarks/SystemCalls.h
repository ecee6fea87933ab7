#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace Bench {

// The sizes of what was sent and of what was received, one system call each.
struct SystemCalls
{
    std::vector<std::size_t> sends;
    std::vector<std::size_t> receives;
};

// Listens to what a call of the library asks of the system.
SystemCalls systemCallsOf(const std::function<std::int32_t()>& call);

} // namespace Bench
