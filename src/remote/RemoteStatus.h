#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// The reply to 'SD'.
class RemoteStopStatus final : public RemoteResponse
{
public:
    explicit RemoteStopStatus(CommandInputStream& stream) { readResponse(code("SD"), stream); }
};

// The reply to 'ST'. Sizes are in bytes; what has no comment is carried and not used.
class RemoteDaemonStatus final : public RemoteResponse
{
public:
    explicit RemoteDaemonStatus(CommandInputStream& stream) { readResponse(code("ST"), stream); }

    std::string version;    // 'v '
    std::int32_t build = 0; // 'bn'
    std::int64_t bt = 0;
    std::int32_t ct = 0;
    std::int32_t ca = 0;
    std::int64_t freeMemory = 0;  // 'mf'
    std::int64_t totalMemory = 0; // 'mt'
    std::int64_t maxMemory = 0;   // 'mm'
    std::int64_t bs = 0;
    std::int64_t bf = 0;
    std::int64_t ss = 0; // two groups of statistics: a count and two values each
    double sa = 0;
    double sd = 0;
    std::int64_t es = 0;
    double ea = 0;
    double ed = 0;

    const std::string& getText() const { return version; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

} // namespace Merrow
