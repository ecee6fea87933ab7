#include "client/ClientVersion.h"

#include "text/Conversion.h"
#include "text/Decimal.h"
#include "text/Lists.h"

namespace Client {

std::string& clientVersion()
{
    static std::string& text = *new std::string; // never destroyed, like the log
    return text;
}

std::string buildClientVersion()
{
    const std::string build = Text::splitAny("7.6.1.007", ".").back();
    char text[64];
    Text::formatText(text, "%s%.3d", "Outlook Larch 7.6.1:", Text::decimal<std::int32_t>(build));
    return text;
}

} // namespace Client
