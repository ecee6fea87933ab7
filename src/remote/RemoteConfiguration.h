#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// The reply to 'VC'.
class RemoteVerifyConfigurationResponse final : public RemoteResponse
{
public:
    explicit RemoteVerifyConfigurationResponse(CommandInputStream& stream) { readResponse(code("VC"), stream); }

    StringMap configErrors; // 'ec'

    const StringMap& getFirstMap() const { return configErrors; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

// The reply to 'KV'.
class RemoteKeyserverVersion final : public RemoteResponse
{
public:
    explicit RemoteKeyserverVersion(CommandInputStream& stream) { readResponse(code("KV"), stream); }

    StringMap keyserverData; // 'kd'

    const StringMap& getFirstMap() const { return keyserverData; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

} // namespace Merrow
