#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// The reply to 'SD'.
class RemoteStopStatus final : public RemoteResponse
{
public:
    explicit RemoteStopStatus(CommandInputStream& stream) { readResponse(code("SD"), stream); }
};

// The reply to 'ST'. Memory sizes are in bytes. A field that is named by its tag is carried and not used.
class RemoteDaemonStatus final : public WithFields<RemoteDaemonStatus>
{
public:
    explicit RemoteDaemonStatus(CommandInputStream& stream) { readResponse(code("ST"), stream); }

    std::string version;
    std::int32_t build = 0;
    std::int64_t bt = 0;
    std::int32_t ct = 0;
    std::int32_t ca = 0;
    std::int64_t freeMemory = 0;
    std::int64_t totalMemory = 0;
    std::int64_t maxMemory = 0;
    std::int64_t bs = 0;
    std::int64_t bf = 0;
    std::int64_t ss = 0; // two groups of statistics: a count and two values each
    double sa = 0;
    double sd = 0;
    std::int64_t es = 0;
    double ea = 0;
    double ed = 0;

    const std::string& getText() const { return version; }

    bool anyField(auto visit)
    {
        return visit(tag("v "), version) || visit(tag("bn"), build) || visit(tag("bt"), bt) || visit(tag("ct"), ct) ||
               visit(tag("ca"), ca) || visit(tag("mf"), freeMemory) || visit(tag("mt"), totalMemory) ||
               visit(tag("mm"), maxMemory) || visit(tag("bs"), bs) || visit(tag("bf"), bf) || visit(tag("ss"), ss) ||
               visit(tag("sa"), sa) || visit(tag("sd"), sd) || visit(tag("es"), es) || visit(tag("ea"), ea) ||
               visit(tag("ed"), ed);
    }
};

} // namespace Merrow
