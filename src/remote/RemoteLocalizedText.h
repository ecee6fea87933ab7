#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// The reply to 'LT'. Each map has locales as its keys.
class RemoteLocalizedText final : public WithFields<RemoteLocalizedText>
{
public:
    explicit RemoteLocalizedText(CommandInputStream& stream) { readResponse(code("LT"), stream); }

    StringMap sl; // the locales' names
    StringMap th; // HTML bodies
    StringMap tb; // text bodies

    const StringMap& getFirstMap() const { return sl; }
    const StringMap& getSecondMap() const { return th; }
    const StringMap& getThirdMap() const { return tb; }

    bool anyField(auto visit) { return visit(tag("sl"), sl) || visit(tag("th"), th) || visit(tag("tb"), tb); }
};

} // namespace Merrow
