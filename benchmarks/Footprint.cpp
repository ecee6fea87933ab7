#include "Floor.h"
#include "Replies.h"
#include "Responder.h"
#include "TarnRemoteClient.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <sys/resource.h>

// What one large message costs the client in memory and in CPU time. One case per process: memory that an earlier case
// left behind would serve the next one.
namespace {

using namespace Bench;

constexpr std::size_t size = 10'000'000;
constexpr int rounds = 20;

char logText[TARN_LOG_SIZE];
char config[1000];
TarnWideChar wide[4][1000];

[[noreturn]] void fail(const char* message)
{
    std::fprintf(stderr, "tarn-bench-footprint: %s\n", message);
    std::exit(1);
}

// A line of this process's memory figures, in bytes.
double memoryFigure(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) {
            return std::stod(line.substr(name.size() + 1)) * 1024;
        }
    }
    fail("no memory figures");
}

// The largest memory of the process while `call` runs.
double peakOf(const std::function<void()>& call)
{
    if (!(std::ofstream("/proc/self/clear_refs") << 5 << std::flush)) {
        fail("the peak cannot be reset");
    }
    call();
    return memoryFigure("VmHWM");
}

struct CpuTime
{
    double user;
    double system;
};

// In milliseconds per call.
CpuTime cpuTimeOf(const std::function<void()>& call)
{
    const auto milliseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    rusage before{};
    rusage after{};
    getrusage(RUSAGE_SELF, &before);
    for (int i = 0; i < rounds; ++i) {
        call();
    }
    getrusage(RUSAGE_SELF, &after);
    return {(milliseconds(after.ru_utime) - milliseconds(before.ru_utime)) / rounds,
            (milliseconds(after.ru_stime) - milliseconds(before.ru_stime)) / rounds};
}

// The caller's buffers are made as large as the item, once its sizes are known.
void receiveItem()
{
    if (DecryptEnvelope("secret", "envelope", u"", "", "", config, 0, wide[0], wide[1], logText) != 0) {
        fail("DecryptEnvelope failed");
    }
    std::uint32_t nameSize = 0;
    std::uint32_t typeSize = 0;
    std::uint32_t dataSize = 0;
    GetNextDecryptedItemInfo(&nameSize, &typeSize, &dataSize);
    const auto name = std::make_unique_for_overwrite<std::uint8_t[]>(nameSize);
    const auto type = std::make_unique<char[]>(typeSize + 1);
    const auto data = std::make_unique_for_overwrite<std::uint8_t[]>(dataSize);
    std::uint32_t flags = 0;
    std::uint32_t kind = 0;
    if (GetNextDecryptedItem(&flags, &kind, name.get(), type.get(), data.get()) != 1 || dataSize != size) {
        fail("GetNextDecryptedItem failed");
    }
}

void sendMessage(const std::string& message)
{
    if (EncryptEnvelopeOnline("bob@example.org", "", "", "ann@example.org", "secret", message.c_str(), u"", wide[0],
                              wide[1], wide[2], wide[3], "", "0", logText) != 0) {
        fail("EncryptEnvelopeOnline failed");
    }
}

} // namespace

int main(int argc, char** argv)
{
    const std::string name = argc == 2 ? argv[1] : "";
    if (name != "item" && name != "message") {
        std::fputs("usage: tarn-bench-footprint item|message\n", stderr);
        return 2;
    }
    const bool receives = name == "item";
    const auto makeReply = [=] { return receives ? payload(1, size) : envelope(100); };
    const Responder responder([=] { return std::vector<std::string>{makeReply()}; });
    const std::string message(receives ? 0 : size, 'm');
    const auto call = [&] { receives ? receiveItem() : sendMessage(message); };

    const double before = memoryFigure("VmRSS");
    const double firstPeak = peakOf(call) - before;
    const double againPeak = peakOf(call) - before;
    const CpuTime callTime = cpuTimeOf(call);

    const std::string request(responder.latestRequest());
    const std::size_t replySize = makeReply().size();
    Floor floor;
    const auto exchange = [&] { floor.exchange(request, replySize); };
    exchange();
    const CpuTime floorTime = cpuTimeOf(exchange);
    std::printf("{\"case\": \"%s\", \"first\": %.3f, \"again\": %.3f, \"user\": %.3f, \"system\": %.3f, "
                "\"floor_user\": %.3f, \"floor_system\": %.3f}\n",
                name.c_str(), firstPeak / size, againPeak / size, callTime.user, callTime.system, floorTime.user,
                floorTime.system);
    return 0;
}
