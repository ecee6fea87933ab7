#include "Replies.h"
#include "remote/RemoteConfiguration.h"
#include "remote/RemoteEnrollment.h"
#include "remote/RemoteEnvelope.h"
#include "remote/RemoteLocalizedText.h"
#include "remote/RemoteLogin.h"
#include "remote/RemoteMessageInformation.h"
#include "remote/RemotePayload.h"
#include "remote/RemoteStatus.h"
#include "support/MemoryStreams.h"

#include <benchmark/benchmark.h>

// Requests written to memory, replies read from it: what is left of a call without its system calls.
namespace {

using namespace Bench;

// Includes the copy that MemoryOutput makes of each send.
bool encode(const std::string& name, std::size_t size)
{
    benchmark::RegisterBenchmark(("encode/" + name).c_str(), [size](benchmark::State& state) {
        const std::string message(size, 'm');
        MemoryOutput out;
        std::int64_t bytes = 0;
        for (auto _ : state) {
            out.beginCommand(Merrow::code("BE"));
            out.writeBytesParam(Merrow::tag("fm"), "ann@example.org", 15);
            out.writeBytesParam(Merrow::tag("to"), "bob@example.org", 15);
            out.writeBytesParam(Merrow::tag("mm"), message.data(), static_cast<std::int32_t>(size));
            out.endCommand();
            bytes += static_cast<std::int64_t>(size) + 58;
            out.sends.clear();
        }
        state.SetBytesProcessed(bytes);
    });
    return true;
}

template <class Reply>
bool decode(const std::string& name, const std::string& reply)
{
    benchmark::RegisterBenchmark(("decode/" + name).c_str(), [reply](benchmark::State& state) {
        for (auto _ : state) {
            MemoryInput in(reply);
            benchmark::DoNotOptimize(Reply(in).statusCode);
        }
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(reply.size()));
    });
    return true;
}

[[maybe_unused]] const bool registered =
    encode("BE, 100 B", 100) && encode("BE, 1 MB", 1'000'000) && encode("BE, 10 MB", 10'000'000) &&
    decode<Merrow::RemoteStopStatus>("SD", plainReply("SD")) &&
    decode<Merrow::RemoteDaemonStatus>("ST", daemonStatus()) &&
    decode<Merrow::RemoteVerifyConfigurationResponse>("VC, 10 entries", configErrors(10)) &&
    decode<Merrow::RemoteLoginSession>("LS, 5 entries", loginSession()) &&
    decode<Merrow::RemoteEnvelope>("BE, 10 localized forms", envelope(1000, 10)) &&
    decode<Merrow::RemoteEnvelope>("BE, 1 MB", envelope(1'000'000)) &&
    decode<Merrow::RemotePayload>("DE, 10 items", payload(10, 100)) &&
    decode<Merrow::RemotePayload>("DE, 1 MB", payload(1, 1'000'000)) &&
    decode<Merrow::RemotePayload>("DE, 10 MB", payload(1, 10'000'000)) &&
    decode<Merrow::RemoteMessageInformation>("MI, 1,000 records", trackingRecords(1000)) &&
    decode<Merrow::RemoteSetInformationResponse>("SI", plainReply("SI")) &&
    decode<Merrow::RemoteKeyserverVersion>("KV, 1,000 entries", keyServer(1000)) &&
    decode<Merrow::RemoteLocalizedText>("LT, 1,000 entries", localizedTexts(1000)) &&
    decode<Merrow::RemoteEnrollParamsResponse>("EP, 20 entries", enrollParameters(10)) &&
    decode<Merrow::RemoteEnrollUserResponse>("EU, 10 entries", enrolled(10));

} // namespace
