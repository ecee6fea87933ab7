#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// What replies that involve a login have in common. Never read by itself.
class RemoteLoginResponse : public RemoteResponse
{
public:
    std::string lkText;  // 'lk', a text for the user
    std::int64_t se = 0; // seconds to wait
    std::int32_t we = 0; // carried, not used
    std::int32_t wd = 0; // carried, not used

    const std::string& getText() const { return lkText; }

protected:
    RemoteLoginResponse() = default;
    ~RemoteLoginResponse() = default;

    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

// The reply to 'LS'.
class RemoteLoginSession final : public RemoteLoginResponse
{
public:
    explicit RemoteLoginSession(CommandInputStream& stream) { readResponse(code("LS"), stream); }

    StringMap sessionMap; // 'sl', goes back to the daemon unchanged

    const StringMap& getSessionMap() const { return sessionMap; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

// The reply to 'SI'.
class RemoteSetInformationResponse final : public RemoteLoginResponse
{
public:
    explicit RemoteSetInformationResponse(CommandInputStream& stream) { readResponse(code("SI"), stream); }
};

} // namespace Merrow
