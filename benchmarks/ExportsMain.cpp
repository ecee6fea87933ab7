#include "Exports.h"
#include "Floor.h"
#include "Responder.h"

#include <benchmark/benchmark.h>

// Each call next to its floor: in the same run, against the same responder, with the same bytes in both directions.
namespace {

using namespace Bench;

class Bed
{
public:
    Bed()
        : exchanges_(all()), responder_([] {
              std::vector<std::string> replies;
              for (const Exchange& exchange : all()) {
                  replies.push_back(exchange.reply);
              }
              return replies;
          })
    {
        exchanges_.front().call(); // builds the client version that the others send
    }

    void registerAll()
    {
        for (std::size_t i = 0; i < exchanges_.size(); ++i) {
            const std::string& name = exchanges_[i].name;
            if (name.starts_with("growth/")) {
                add(name, i, &Bed::call);
            } else {
                add("call/" + name, i, &Bed::call);
                add("floor/" + name, i, &Bed::floor);
                add("pieces/" + name, i, &Bed::pieces);
            }
        }
    }

private:
    static std::vector<Exchange> all()
    {
        std::vector<Exchange> exchanges = exportExchanges();
        std::vector<Exchange> growth = growthExchanges();
        std::move(growth.begin(), growth.end(), std::back_inserter(exchanges));
        return exchanges;
    }

    using Measure = void (Bed::*)(benchmark::State&, const Exchange&);

    void add(const std::string& name, std::size_t index, Measure measure)
    {
        const auto run = [=, this](benchmark::State& state) {
            responder_.choose(index);
            (this->*measure)(state, exchanges_[index]);
        };
        benchmark::RegisterBenchmark(name.c_str(), run)->UseRealTime();
    }

    void call(benchmark::State& state, const Exchange& exchange)
    {
        for (auto _ : state) {
            if (exchange.call() != exchange.status) {
                state.SkipWithError("the call failed");
                break;
            }
        }
        state.counters["sent"] = static_cast<double>(responder_.latestRequest().size());
        state.counters["received"] = static_cast<double>(exchange.reply.size());
    }

    void floor(benchmark::State& state, const Exchange& exchange)
    {
        const std::string request = requestOf(exchange);
        for (auto _ : state) {
            floor_.exchange(request, exchange.reply.size());
        }
    }

    void pieces(benchmark::State& state, const Exchange& exchange)
    {
        const SystemCalls calls = systemCallsOf(exchange.call);
        const std::string request(responder_.latestRequest());
        if (calls.sends.empty() || calls.receives.empty()) {
            state.SkipWithError("the call's system calls were not seen");
        }
        for (auto _ : state) {
            floor_.exchangeInPieces(request, calls);
        }
        state.counters["system calls"] = static_cast<double>(calls.sends.size() + calls.receives.size());
    }

    std::string requestOf(const Exchange& exchange) const
    {
        exchange.call();
        return std::string(responder_.latestRequest());
    }

    std::vector<Exchange> exchanges_;
    Responder responder_;
    Floor floor_;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    Bed bed;
    bed.registerAll();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
