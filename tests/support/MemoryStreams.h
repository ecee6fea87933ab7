#pragma once

#include "protocol/CommandInputStream.h"
#include "protocol/CommandOutputStream.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

// The streams over memory instead of a socket, for unit tests, fuzz targets and benchmarks alike.

// Keeps what was sent, send by send.
class MemoryOutput final : public Merrow::CommandOutputStream
{
public:
    std::int32_t sendRaw(const char* bytes, std::int32_t count) override
    {
        const std::int32_t sent = answers.empty() ? count : std::min(answers.front(), count);
        if (!answers.empty()) {
            answers.erase(answers.begin());
        }
        if (sent > 0) {
            sends.emplace_back(bytes, static_cast<std::size_t>(sent));
        }
        return sent;
    }

    std::string bytes() const
    {
        std::string all;
        for (const std::string& one : sends) {
            all += one;
        }
        return all;
    }

    std::vector<std::string> sends;
    // What the next sends return; a send beyond them takes all.
    std::vector<std::int32_t> answers;
};

// Delivers given bytes, `chunk` at the most a receive, and then fails like a reset connection.
class MemoryInput : public Merrow::CommandInputStream
{
public:
    explicit MemoryInput(std::string_view bytes, std::int32_t chunk = INT32_MAX) : rest(bytes), chunk_(chunk) {}

    virtual ~MemoryInput() = default;

    std::int32_t receiveRaw(char* buffer, std::int32_t count) override
    {
        if (waits > 0) {
            --waits;
            return 0;
        }
        const std::size_t received =
            std::min({rest.size(), static_cast<std::size_t>(count), static_cast<std::size_t>(chunk_)});
        if (received == 0) {
            return -1;
        }
        std::memcpy(buffer, rest.data(), received);
        rest.remove_prefix(received);
        return static_cast<std::int32_t>(received);
    }

    std::string_view rest;
    int waits = 0; // how many receives return 0 first

private:
    std::int32_t chunk_;
};
