#include "Exports.h"
#include "Floor.h"
#include "Peers.h"
#include "Responder.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <sched.h>

// The library's calls beside other ways to move the same bytes to a local process and back, all in one run.
namespace {

using namespace Bench;

void pinTo(std::size_t core)
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    if (sched_setaffinity(0, sizeof cores, &cores) != 0) {
        die("benchmarks: two cores are needed");
    }
}

std::vector<Exchange> comparedExchanges()
{
    std::vector<Exchange> exchanges = exportExchanges();
    std::erase_if(exchanges, [](const Exchange& exchange) {
        const auto ends = [&](const char* end) { return exchange.name.ends_with(end); };
        return exchange.name != "GetTarnVersion" && exchange.name != "EncryptEnvelopeOnline 200 B" && !ends(" 1 MB") &&
               !ends(" 10 MB");
    });
    return exchanges;
}

void add(const std::string& name, const std::function<void()>& exchange)
{
    benchmark::RegisterBenchmark(name.c_str(), [exchange](benchmark::State& state) {
        exchange();
        for (auto _ : state) {
            exchange();
        }
    })->UseRealTime();
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    pinTo(1);
    const std::vector<Exchange> exchanges = comparedExchanges();
    Responder responder([&] {
        std::vector<std::string> replies;
        std::ranges::transform(exchanges, std::back_inserter(replies), &Exchange::reply);
        return replies;
    });
    const std::pair<std::string, std::function<PeerExchange()>> servers[] = {
        {"ZeroMQ", startZeroMq()}, {"Redis", startRedis()}, {"gRPC", startGrpc()}};
    pinTo(0);

    Floor floor;
    exchanges.front().call(); // builds the client version that the others send
    std::vector<std::pair<std::string, PeerExchange>> peers;
    for (const auto& [name, connect] : servers) {
        peers.emplace_back(name, connect());
    }
    for (std::size_t i = 1; i < exchanges.size(); ++i) {
        const Exchange& exchange = exchanges[i];
        responder.choose(i);
        exchange.call();
        const std::string request(responder.latestRequest());
        const std::size_t replySize = exchange.reply.size();
        add("TarnRemoteClient/" + exchange.name, [&, i] {
            responder.choose(i);
            if (exchange.call() != exchange.status) {
                die("benchmarks: a call failed");
            }
        });
        add("floor/" + exchange.name, [&, i, request, replySize] {
            responder.choose(i);
            floor.exchange(request, replySize);
        });
        for (const auto& [name, peer] : peers) {
            add(name + "/" + exchange.name, [peer, request, replySize] { peer(request, replySize); });
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
