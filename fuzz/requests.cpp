// The stand-in daemon's reader of requests. The first byte of an input picks a command and says whether the rest is
// the bytes of a connection, or only the parameters of one request, which then get a frame with a right CRC.
#include "Request.h"
#include "RequestReader.h"
#include "Target.h"

#include <algorithm>
#include <zlib.h>

namespace {

using namespace standin;

constexpr std::uint8_t framedBit = 0x10;
constexpr std::uint8_t codeMask = 0x0F;

Tag codeOf(std::uint8_t selector)
{
    demand(commands().size() <= codeMask + 1U, "every command can be picked");
    return commands()[(selector & codeMask) % commands().size()].code;
}

// A connection whose bytes arrive in pieces.
class Pieces final : public ByteSource
{
public:
    Pieces(std::string_view bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    std::size_t read(char* into, std::size_t size) override
    {
        const auto count = bytes_.copy(into, std::min(size, size_));
        bytes_.remove_prefix(count);
        return count;
    }

private:
    std::string_view bytes_;
    std::size_t size_;
};

struct Outcome
{
    std::string requests; // the requests read, written again
    std::string failure;
    std::size_t offset = 0;

    bool operator==(const Outcome&) const = default;
};

void checkValues(const Request& request)
{
    for (const Parameter& parameter : request.message().parameters) {
        demand(request.has(parameter.tag), "a parameter is found");
        if (parameter.kind == Kind::Map) {
            demand(encodeMap(request.map(parameter.tag)) == request.text(parameter.tag), "a map is read exactly");
        } else if (parameter.kind == Kind::Int) {
            std::string bytes;
            appendNumber(bytes, request.number(parameter.tag));
            demand(bytes == request.text(parameter.tag), "a number is read exactly");
        }
    }
}

Outcome read(std::string_view bytes, std::size_t piece)
{
    Pieces pieces(bytes, piece);
    RequestReader reader(pieces);
    Outcome outcome;
    try {
        while (auto message = reader.next()) {
            outcome.requests += encodeFrame(*message);
            checkValues(Request(std::move(*message)));
        }
    } catch (const WireError& error) {
        outcome.failure = error.what();
        outcome.offset = error.offset;
    }
    return outcome;
}

std::string framed(Tag code, std::string_view parameters)
{
    std::string frame = encodeFrame({code, {}});
    std::string bytes = frame.substr(0, 4).append(parameters).append(frame.substr(4, 2));
    const auto crc = crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    appendNumber(bytes, static_cast<std::uint32_t>(crc));
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string_view rest = viewOf(bytes + 1, size - 1);
    const bool isFramed = (bytes[0] & framedBit) != 0;
    const std::string stream = isFramed ? framed(codeOf(bytes[0]), rest) : std::string(rest);

    const Outcome whole = read(stream, stream.size());
    demand(stream.starts_with(whole.requests), "what is accepted is written again byte for byte");
    demand(whole.offset <= stream.size() - whole.requests.size(), "a complaint names a place in the request");
    demand(read(stream, 1 + (bytes[0] >> 5)) == whole, "how the bytes arrive makes no difference");
    return 0;
}

std::vector<std::string> seedInputs()
{
    std::vector<std::string> seeds;
    for (std::size_t i = 0; i < commands().size(); ++i) {
        const auto selector = static_cast<char>(i);
        const auto& command = commands()[i];
        std::string all;
        for (const auto& rule : command.parameters) {
            std::string one;
            switch (rule.kind) {
            case Kind::Map:
                appendParameter(one, rule.tag, encodeMap({{"a", "1"}, {"b", ""}}));
                break;
            case Kind::Bool:
                appendParameter(one, rule.tag, "\1");
                break;
            case Kind::Int:
                appendParameter(one, rule.tag, "1234");
                break;
            case Kind::Long:
                appendParameter(one, rule.tag, "12345678");
                break;
            default:
                appendParameter(one, rule.tag, "text");
            }
            seeds.push_back(static_cast<char>(selector | framedBit) + one);
            all += one;
        }
        seeds.push_back(static_cast<char>(selector | framedBit) + all);
        seeds.push_back(selector + framed(command.code, all) + framed(command.code, ""));
    }
    return seeds;
}
