#pragma once

#include "text/EnvelopeConfig.h"

namespace Client {

// Writes an envelope configuration into the caller's buffer, encoded when asked for, and logs it in plain.
void getEnvelopeConfig(const StringMap& entries, bool encode, char* destination);

} // namespace Client
