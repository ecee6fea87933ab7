#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Bench {

// One call of an export, and what the daemon answers to it.
struct Exchange
{
    std::string name;
    std::string reply;
    std::int32_t status; // what the call returns
    std::function<std::int32_t()> call;
};

// Each export that talks to the daemon and keeps the connection, with small, large and long contents.
std::vector<Exchange> exportExchanges();

// The same work at sizes from 10 to 100,000, or to 400 where the log's bound ends it; names are "growth/WHAT/SIZE".
std::vector<Exchange> growthExchanges();

} // namespace Bench
