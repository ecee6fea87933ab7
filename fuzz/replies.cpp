// The reply classes. The first byte of an input picks the class (low four bits), whether the rest is a whole reply or
// only its parameters, which then get a frame with a right CRC (bit 4), and whether the reply arrives in chunks (bit
// 5).
#include "MemoryStreams.h"
#include "ReplyFields.h"
#include "Target.h"
#include "protocol/CommandException.h"

#include <algorithm>
#include <optional>

namespace {

constexpr std::uint8_t framedBit = 0x10;
constexpr std::uint8_t chunksBit = 0x20;
constexpr std::size_t endSize = 6; // end marker and CRC

class Input final : public MemoryInput
{
public:
    using MemoryInput::MemoryInput;

    // A text that claims more than will ever arrive ends at the failed receive, however long it says it is: one byte
    // too many does the same, and the fuzzer's memory is spared.
    std::string readString(std::int32_t length) override
    {
        const auto beyond = static_cast<std::int64_t>(rest.size()) + 1;
        return CommandInputStream::readString(static_cast<std::int32_t>(std::min<std::int64_t>(length, beyond)));
    }
};

struct Outcome
{
    std::optional<wire::Params> fields;
    std::string failure;
    std::string_view rest;

    bool operator==(const Outcome&) const = default;
};

Outcome read(const ReplyClass& reply, std::string_view bytes, std::int32_t chunk = INT32_MAX)
{
    Input in(bytes, chunk);
    Outcome outcome;
    try {
        outcome.fields = reply.read(in);
    } catch (Merrow::CommandException* exception) {
        outcome.failure = exception->what();
        delete exception;
    }
    outcome.rest = in.rest;
    return outcome;
}

// What is accepted has our version, the class's code, an end marker and the CRC of all that came before it.
void checkFrame(const std::string& code, std::string_view taken)
{
    demand(taken.size() >= 4 + endSize && taken.starts_with(std::string("\0\7", 2) + code), "the head was checked");
    const std::string_view end = taken.substr(taken.size() - endSize);
    demand(end.starts_with("\xCE\xDE"), "the reply ends at its end marker");
    demand(end.substr(2) == wire::int32(wire::crc(taken.substr(0, taken.size() - 4))), "the CRC was checked");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const ReplyClass& reply = replyClasses()[(bytes[0] & 0x0F) % replyClasses().size()];
    const std::string_view rest = viewOf(bytes + 1, size - 1);
    const std::string message = (bytes[0] & framedBit) != 0 ? wire::framed(reply.code, rest) : std::string(rest);

    const Outcome outcome = read(reply, message);
    if ((bytes[0] & chunksBit) != 0) {
        demand(read(reply, message, 1) == outcome, "how the bytes arrive makes no difference");
    }
    if (outcome.fields) {
        checkFrame(reply.code, std::string_view(message).substr(0, message.size() - outcome.rest.size()));
        const std::string again = wire::message(reply.code, *outcome.fields);
        demand(read(reply, again) == Outcome{outcome.fields, "", {}}, "written again, it reads the same");
    }
    return 0;
}

std::vector<std::string> seedInputs()
{
    const std::string map = wire::sequence({"key", "value", "other", ""});
    const std::string items = wire::sequence({wire::parameters({{"da", map}, {"lc", "en"}, {"fc", "text/plain"}}), ""});
    std::vector<std::string> seeds;
    for (std::size_t i = 0; i < replyClasses().size(); ++i) {
        const ReplyClass& reply = replyClasses()[i];
        const std::string empty = wire::message(reply.code);
        // Every field there is: its tags and the sizes of its numbers come from reading the empty reply.
        wire::Params all = read(reply, empty).fields.value();
        for (auto& [tag, value] : all) {
            const bool holdsItems = tag == "le" || tag == "ri" || (tag == "da" && reply.code == "DE");
            value = !value.empty() ? value : holdsItems ? items : map;
        }
        const auto selector = static_cast<char>(i);
        seeds.push_back(selector + empty);
        seeds.push_back(static_cast<char>(selector | chunksBit) + wire::message(reply.code, all));
        seeds.push_back(static_cast<char>(selector | framedBit | chunksBit) + wire::parameters(all));
        for (const auto& field : all) {
            seeds.push_back(static_cast<char>(selector | framedBit) + wire::parameters({field}));
        }
    }
    return seeds;
}
