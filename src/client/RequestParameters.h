#pragma once

#include "client/OperationLog.h"
#include "platform/WideText.h"
#include "protocol/CommandOutputStream.h"
#include "remote/RemoteResponse.h"

#include <string_view>

// What the exports' requests and log lines have in common.
namespace Client {

void sendText(Merrow::CommandOutputStream& out, Merrow::Tag tag, std::string_view text);

// 'tc'.
void sendClientVersion(Merrow::CommandOutputStream& out);

// A text that is sent, and named in the log by its label alone, only when it is not empty.
void sendSecret(Merrow::CommandOutputStream& out, Merrow::Tag tag, const char* text, LogLabel label);

// 'en', only when it is not empty; the log tells its size.
void sendEnvelope(Merrow::CommandOutputStream& out, const char* envelope);

// 'ep', only when it is not empty.
void sendConfigFile(Merrow::CommandOutputStream& out, const WideChar* configFile,
                    LogLabel label = "Setting config file: ");

// Code and message, a line each.
void logStatus(const Merrow::RemoteResponse& reply);

} // namespace Client
