#pragma once

#include "ScriptedDaemon.h"
#include "TarnRemoteClient.h"
#include "Wire.h"

#include <gtest/gtest.h>

#include <array>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

using Lines = std::vector<std::string>;
using Wide = std::basic_string<TarnWideChar>;

inline Wide wide(std::u16string_view text)
{
    return Wide(text.begin(), text.end());
}

// An output buffer that knows whether it was written to.
template <class Char>
class Output
{
public:
    explicit Output(std::size_t size = 4096) : buffer_(size, sentinel) {}

    operator Char*() { return buffer_.data(); }
    bool untouched() const { return buffer_ == std::vector<Char>(buffer_.size(), sentinel); }

    // The text up to its terminator. UTF-16 comes as char16_t on every system.
    auto text() const
    {
        using Unit = std::conditional_t<sizeof(Char) == 1, char, char16_t>;
        const std::basic_string<Char> found(buffer_.data());
        return std::basic_string<Unit>(found.begin(), found.end());
    }

    // The first `count` units, whatever they are.
    std::basic_string<Char> first(std::size_t count) const { return {buffer_.data(), count}; }

private:
    static constexpr Char sentinel = '~';
    std::vector<Char> buffer_;
};

// One test of exports against the scripted daemon. Each runs in a process of its own: the library's connection is a
// process-wide thing, and a test may leave it in any state.
class ExportTest : public testing::Test
{
protected:
    // The latest call's log without its prefixes, which are checked. "#" stands for the socket's number.
    Lines lines()
    {
        static const std::regex prefix("^\\[TarnRemoteClient:[1-9][0-9]*\\] ");
        static const std::regex socket("^(Got socket:? )[1-9][0-9]*$");
        const std::string text = log.text();
        EXPECT_TRUE(text.empty() || text.ends_with('\n'));
        Lines result;
        std::size_t start = 0;
        for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
            const std::string line = text.substr(start, end - start);
            if (std::regex_search(line, prefix)) {
                result.push_back(std::regex_replace(std::regex_replace(line, prefix, ""), socket, "$1#"));
            } else {
                EXPECT_FALSE(result.empty()) << "a log that does not begin with a prefix: " << line;
                if (!result.empty()) {
                    result.back() += "\n" + line; // the second line of a statement
                }
            }
            start = end + 1;
        }
        return result;
    }

    // The last line when it is a failure's, with "N" for a number; else empty.
    std::string failureLine()
    {
        const Lines all = lines();
        static const std::regex number(" : [0-9]+$");
        return all.empty() || !std::regex_search(all.back(), number) ? ""
                                                                     : std::regex_replace(all.back(), number, " : N");
    }

    std::string request(std::size_t i)
    {
        const auto all = daemon.requests();
        return i < all.size() ? all[i] : "no such request";
    }

    // Makes the client version known, and the connection.
    void learnVersion()
    {
        daemon.play(wire::message("ST", {{"st", wire::shortInt(0)}}));
        Output<char> version;
        ASSERT_EQ(GetTarnVersion(version, log), 0);
    }

    const std::string unexpected = "Unexpected exception occured. GetLastError() : N";
    const std::string clientVersion = "Outlook Larch 7.6.1:007";

    ScriptedDaemon daemon;
    Output<char> log{TARN_LOG_SIZE};
};
