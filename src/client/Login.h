#pragma once

#include "platform/WideText.h"
#include "protocol/CommandInputStream.h"
#include "protocol/CommandOutputStream.h"
#include "remote/RemoteLogin.h"

namespace Client {

// One 'LS' exchange. The session it returns is never deleted.
const Merrow::RemoteLoginSession& exchangeLogin(Merrow::CommandOutputStream& out, Merrow::CommandInputStream& in,
                                                const char* user, const char* password, const WideChar* configFile);

} // namespace Client
