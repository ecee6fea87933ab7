// The reply classes. The first two bytes of an input name a class by its code (any others pick one). The third tells
// whether the rest is a whole reply or only its parameters, which then get a frame with a right CRC (bit 0), and whether
// the reply arrives in chunks (bit 1).
#include "MemoryStreams.h"
#include "ReplyFields.h"
#include "Target.h"
#include "protocol/CommandException.h"

#include <algorithm>
#include <optional>

namespace {

constexpr std::size_t selectorSize = 3;
constexpr char framedBit = 1;
constexpr char chunksBit = 2;
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

const ReplyClass& classOf(std::string_view selector)
{
    const auto& all = replyClasses();
    const auto named = std::ranges::find(all, selector.substr(0, 2), &ReplyClass::code);
    return named != all.end() ? *named : all[static_cast<unsigned char>(selector[0]) % all.size()];
}

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
    if (size < selectorSize) {
        return 0;
    }
    const std::string_view input = viewOf(bytes, size);
    const ReplyClass& reply = classOf(input);
    const std::string_view rest = input.substr(selectorSize);
    const std::string message = (input[2] & framedBit) != 0 ? wire::framed(reply.code, rest) : std::string(rest);

    const Outcome outcome = read(reply, message);
    if ((input[2] & chunksBit) != 0) {
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
    std::vector<std::string> seeds;
    for (const ReplyClass& reply : replyClasses()) {
        const std::string empty = wire::message(reply.code);
        Input in(empty);
        const wire::Params examples = reply.examples(in);
        const std::string full = wire::message(reply.code, examples);
        demand(read(reply, full).failure.empty(), "each field can be read");
        const auto add = [&](char flags, const std::string& rest) { seeds.push_back(reply.code + flags + rest); };
        add(0, empty);
        add(chunksBit, full);
        add(framedBit | chunksBit, wire::parameters(examples));
        for (const auto& example : examples) {
            add(framedBit, wire::parameters({example}));
        }
    }
    return seeds;
}
