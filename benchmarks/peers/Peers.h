#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace Bench {

// One exchange: sends the bytes and waits for as many as are wanted back.
using PeerExchange = std::function<void(const std::string& bytes, std::size_t replySize)>;

// Each starts a server in a process of its own and returns a function that connects to it. All servers have to be
// started before the first client: what a client starts does not survive a fork.
std::function<PeerExchange()> startZeroMq();
std::function<PeerExchange()> startRedis();
std::function<PeerExchange()> startGrpc();

} // namespace Bench
