#pragma once

#include "Commands.h"
#include "Wire.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace standin {

// Takes a connection's bytes as they arrive and cuts them into requests. Only bytes that have arrived are held, so
// a length that promises gigabytes costs nothing.
class RequestReader
{
public:
    static constexpr std::size_t maxRequestSize = std::size_t{256} << 20;
    static constexpr std::size_t maxParameters = 100'000;

    void feed(std::string_view bytes) { buffer_.append(bytes); }

    // The next whole request, or nothing while bytes are missing. Throws WireError, with an offset into the request,
    // at bytes that can never become one; the reader is of no use after that.
    std::optional<Message> next();

    // Whether no request has begun.
    bool idle() const { return buffer_.empty(); }

private:
    enum class Step { AtVersion, AtCode, AtTag, AtLength, AtValue, AtCrc };

    bool advance();
    std::optional<std::string_view> take(std::size_t count);
    bool takeLength();
    bool takeValue();
    void checkTag(Tag tag) const;
    void checkCrc(std::uint32_t received) const;

    std::string buffer_;
    std::size_t position_ = 0;
    std::uint32_t crc_ = 0;
    Step step_ = Step::AtVersion;
    const CommandRule* command_ = nullptr;
    const ParameterRule* parameter_ = nullptr;
    std::size_t length_ = 0;
    Message message_;
};

} // namespace standin
