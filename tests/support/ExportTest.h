#pragma once

#include "ScriptedDaemon.h"
#include "TarnRemoteClient.h"
#include "Wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
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
    // The latest call's log without its prefixes, which are checked and whose numbers are kept. "#" stands for the
    // socket's number.
    Lines lines()
    {
        sourceLines.clear();
        const std::string text = log.text();
        EXPECT_TRUE(text.empty() || text.ends_with('\n'));
        Lines result;
        std::size_t start = 0;
        for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
            const std::string line = text.substr(start, end - start);
            int number = 0;
            int messageStart = 0;
            if (std::sscanf(line.c_str(), "[TarnRemoteClient:%d] %n", &number, &messageStart) == 1 &&
                messageStart > 0) {
                EXPECT_GT(number, 0);
                sourceLines.push_back(number);
                // One blank follows the prefix, whatever the message begins with.
                messageStart = static_cast<int>(line.find("] ")) + 2;
                result.push_back(withoutSocket(line.substr(static_cast<std::size_t>(messageStart))));
            } else if (result.empty()) {
                ADD_FAILURE() << "a log that does not begin with a prefix: " << line;
            } else {
                result.back() += "\n" + line; // the second line of a statement
            }
            start = end + 1;
        }
        return result;
    }

    // The last line when it ends in an error number, with "N" for that; else empty.
    std::string failureLine()
    {
        const Lines all = lines();
        const std::string last = all.empty() ? "" : all.back();
        const std::size_t label = last.find_last_not_of("0123456789");
        return label == std::string::npos || label + 1 == last.size() ? "" : last.substr(0, label + 1) + "N";
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

    static std::string withoutSocket(const std::string& message)
    {
        for (const std::string label : {"Got socket: ", "Got socket "}) {
            const std::string number = message.substr(std::min(label.size(), message.size()));
            if (message.starts_with(label) && !number.empty() &&
                number.find_first_not_of("0123456789") == std::string::npos) {
                return label + "#";
            }
        }
        return message;
    }

    const std::string unexpected = "Unexpected exception occured. GetLastError() : N";
    const std::string clientVersion = "Outlook Larch 7.6.1:007";

    ScriptedDaemon daemon;
    std::vector<int> sourceLines;
    Output<char> log{TARN_LOG_SIZE};
};
