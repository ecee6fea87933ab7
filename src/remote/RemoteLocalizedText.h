#pragma once

#include "remote/RemoteResponse.h"

namespace Merrow {

// The reply to 'LT'. Each map has locales as its keys.
class RemoteLocalizedText final : public RemoteResponse
{
public:
    explicit RemoteLocalizedText(CommandInputStream& stream);

    StringMap sl; // the locales' names
    StringMap th; // HTML bodies
    StringMap tb; // text bodies

    StringMap getFirstMap() const { return sl; }
    StringMap getSecondMap() const { return th; }
    StringMap getThirdMap() const { return tb; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

} // namespace Merrow
