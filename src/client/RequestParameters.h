#pragma once

#include "client/OperationLog.h"
#include "platform/WideText.h"
#include "protocol/CommandOutputStream.h"
#include "remote/RemoteResponse.h"

#include <string_view>

// What the exports' requests and log lines have in common.
namespace Client {

// Throws when the text is longer than a parameter can be.
void sendText(Merrow::CommandOutputStream& out, Merrow::Tag parameter, std::string_view text);

// 'tc'.
void sendClientVersion(Merrow::CommandOutputStream& out);

// A value that is logged after its label and sent.
void sendLogged(Merrow::CommandOutputStream& out, Merrow::Tag parameter, LogLabel label, std::string_view text);
void sendLogged(Merrow::CommandOutputStream& out, Merrow::Tag parameter, LogLabel label, std::int32_t number);

// The same for a text that is left out when it is empty.
void sendIfAny(Merrow::CommandOutputStream& out, Merrow::Tag parameter, LogLabel label, std::string_view text);

// The same, with only the label in the log.
void sendIfAnyUnlogged(Merrow::CommandOutputStream& out, Merrow::Tag parameter, LogLabel label, std::string_view text);

// 'en', only when it is not empty; the log shows its size.
void sendEnvelope(Merrow::CommandOutputStream& out, const char* envelope);

// 'ep', only when it is not empty.
void sendConfigFile(Merrow::CommandOutputStream& out, const WideChar* configFile,
                    LogLabel label = "Setting config file: ");

// Code and message, a line each.
void logStatus(const Merrow::RemoteResponse& reply);

} // namespace Client
