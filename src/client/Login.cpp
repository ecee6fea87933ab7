#include "client/Login.h"

#include "client/RequestParameters.h"
#include "text/Conversion.h"

namespace Client {

using Merrow::code;
using Merrow::tag;

const Merrow::RemoteLoginSession& exchangeLogin(Merrow::CommandOutputStream& out, Merrow::CommandInputStream& in,
                                                const char* user, const char* password, const WideChar* configFile)
{
    out.beginCommand(code("LS"));
    sendClientVersion(out);
    sendText(out, tag("to"), Text::orEmpty(user));
    sendText(out, tag("ky"), Text::orEmpty(password));
    sendConfigFile(out, configFile);
    out.endCommand();
    return *new Merrow::RemoteLoginSession(in);
}

} // namespace Client
