#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// The reply to 'VC'.
class RemoteVerifyConfigurationResponse final : public WithFields<RemoteVerifyConfigurationResponse>
{
public:
    explicit RemoteVerifyConfigurationResponse(CommandInputStream& stream) { readResponse(code("VC"), stream); }

    StringMap configErrors;

    const StringMap& getFirstMap() const { return configErrors; }

    bool anyField(auto visit) { return visit(tag("ec"), configErrors); }
};

// The reply to 'KV'.
class RemoteKeyserverVersion final : public WithFields<RemoteKeyserverVersion>
{
public:
    explicit RemoteKeyserverVersion(CommandInputStream& stream) { readResponse(code("KV"), stream); }

    StringMap keyserverData;

    const StringMap& getFirstMap() const { return keyserverData; }

    bool anyField(auto visit) { return visit(tag("kd"), keyserverData); }
};

} // namespace Merrow
