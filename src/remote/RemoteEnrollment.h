#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// The reply to 'EP': which enrollment form applies.
class RemoteEnrollParamsResponse final : public WithFields<RemoteEnrollParamsResponse>
{
public:
    explicit RemoteEnrollParamsResponse(CommandInputStream& stream) { readResponse(code("EP"), stream); }

    std::int32_t su = 0; // single sign-on user
    std::int32_t ou = 0; // one-click user
    std::int32_t qn = 0; // number of security questions
    std::int32_t qe = 0; // whether these are editable
    StringMap al;        // locales
    StringMap sq;        // security questions

    const StringMap& getSecondMap() const { return al; }
    const StringMap& getThirdMap() const { return sq; }

    bool anyField(auto visit)
    {
        return visit(tag("su"), su) || visit(tag("ou"), ou) || visit(tag("qn"), qn) || visit(tag("qe"), qe) ||
               visit(tag("al"), al) || visit(tag("sq"), sq);
    }
};

// The reply to 'EU'.
class RemoteEnrollUserResponse final : public WithFields<RemoteEnrollUserResponse>
{
public:
    explicit RemoteEnrollUserResponse(CommandInputStream& stream) { readResponse(code("EU"), stream); }

    StringMap ve; // the daemon's answers, by field
    std::int32_t el = 0;

    const StringMap& getFirstMap() const { return ve; }

    bool anyField(auto visit) { return visit(tag("ve"), ve) || visit(tag("el"), el); }
};

} // namespace Merrow
