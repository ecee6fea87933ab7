#pragma once

#include <TarnRemoteClient.h>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace tarn {

// The library writes its output texts without a bound, so each gets room for whatever its kind can hold. The memory
// is not initialised: what no text fills is never touched.
template <class Unit>
class Buffer
{
public:
    explicit Buffer(std::size_t size) : units(std::make_unique_for_overwrite<Unit[]>(size)) { units[0] = 0; }
    operator Unit*() { return units.get(); }
    Unit* get() const { return units.get(); }

private:
    std::unique_ptr<Unit[]> units;
};

namespace room {
// One value: an address, an id, a link, a key, a version.
constexpr std::size_t value = std::size_t{1} << 20;
// A list or a whole text: recipients, locales, questions, message bodies.
constexpr std::size_t text = std::size_t{16} << 20;
// An envelope holds its message encrypted (base64 and line ends: a factor below 1.4) and may quote it in a form.
constexpr std::size_t envelope(std::size_t messageSize)
{
    return 2 * messageSize + (std::size_t{1} << 20);
}
} // namespace room

// How much of the operation log a call's own texts take: their bytes, and a prefix and a label for each.
class LogLoad
{
public:
    LogLoad() = default;
    LogLoad(std::initializer_list<std::string_view> texts)
    {
        for (const auto text : texts)
            add(text.size());
    }
    void add(std::size_t textSize, std::size_t times = 1) { bytes += (textSize + 50) * times; }

    std::size_t bytes = 0;
    std::string advice = "give shorter texts"; // for a user whose texts are too much
};

// What every call has in common: the log buffer, the waiting, and what is made of the outcome.
class Exchange
{
public:
    bool showLog = false;

    // Makes a call that takes a log buffer and returns a status. Returns for status 0 alone; throws a Refusal for
    // another status, and a Failure when the exchange broke down or its log could grow beyond its buffer, which would
    // end the process.
    void run(const std::string& name, const LogLoad& load, const std::function<std::int32_t(char*)>& call);

    // The log of the last call, empty when the call wrote none.
    const std::string& log() const { return lastLog; }

    // Whether the last call broke down instead of being answered.
    bool brokeDown() const;

    // The call alone, its status not looked at.
    std::int32_t attempt(const std::string& name, const LogLoad& load, const std::function<std::int32_t(char*)>& call);

private:
    std::string lastLog;
};

// The daemon's status message in an operation log; an empty text when there is none.
std::string statusMessage(std::string_view log);

[[noreturn]] void throwBrokenExchange(const std::string& name);

} // namespace tarn
