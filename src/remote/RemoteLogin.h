#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// What replies that involve a login have in common. Never read by itself.
class RemoteLoginResponse : public WithFields<RemoteLoginResponse>
{
public:
    std::string lkText;  // a text for the user
    std::int64_t se = 0; // seconds to wait
    std::int32_t we = 0; // carried, not used
    std::int32_t wd = 0; // carried, not used

    const std::string& getText() const { return lkText; }

    bool anyField(auto visit)
    {
        return visit(tag("lk"), lkText) || visit(tag("se"), se) || visit(tag("we"), we) || visit(tag("wd"), wd);
    }

protected:
    RemoteLoginResponse() = default;
    ~RemoteLoginResponse() = default;
};

// The reply to 'LS'.
class RemoteLoginSession final : public WithFields<RemoteLoginSession, RemoteLoginResponse>
{
public:
    explicit RemoteLoginSession(CommandInputStream& stream) { readResponse(code("LS"), stream); }

    StringMap sessionMap; // goes back to the daemon unchanged

    const StringMap& getSessionMap() const { return sessionMap; }

    bool anyField(auto visit) { return visit(tag("sl"), sessionMap); }
};

// The reply to 'SI'.
class RemoteSetInformationResponse final : public RemoteLoginResponse
{
public:
    explicit RemoteSetInformationResponse(CommandInputStream& stream) { readResponse(code("SI"), stream); }
};

} // namespace Merrow
