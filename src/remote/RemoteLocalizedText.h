#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// The reply to 'LT'. Each map has locales as its keys.
class RemoteLocalizedText final : public RemoteResponse
{
public:
    explicit RemoteLocalizedText(CommandInputStream& stream) { readResponse(code("LT"), stream); }

    StringMap sl; // the locales' names
    StringMap th; // HTML bodies
    StringMap tb; // text bodies

    const StringMap& getFirstMap() const { return sl; }
    const StringMap& getSecondMap() const { return th; }
    const StringMap& getThirdMap() const { return tb; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

} // namespace Merrow
