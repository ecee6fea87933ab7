#pragma once

#include <functional>

namespace Bench {

// Runs `serve` in a process that ends with this one.
void startServer(const std::function<void()>& serve);

} // namespace Bench
