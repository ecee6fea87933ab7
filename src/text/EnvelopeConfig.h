#pragma once

#include "platform/WideText.h"

#include <map>
#include <string>
#include <string_view>

// The envelope configuration as text: "key: value; " for each entry in key order, plain or encoded.
namespace Text {

using ConfigMap = std::map<std::string, std::string>;

// Writes each byte as a signed decimal number followed by "&". Takes the text's contents: it is empty afterwards.
std::string encodeCharCodes(std::string& text);

// The map behind an encoded configuration text. Entries that are no "key: value" are left out; and so is a lone entry
// without "; " behind it.
ConfigMap decodeConfigMap(std::string_view encoded);

// Writes a map into the caller's buffer, encoded when asked for. Returns the plain text, for the log.
std::string getEnvelopeConfig(ConfigMap entries, bool encode, char* destination);

// Writes a map into the caller's UTF-16 buffer.
void formatConfigMapWide(ConfigMap entries, WideChar* destination);

} // namespace Text
