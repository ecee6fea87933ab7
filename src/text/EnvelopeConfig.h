#pragma once

#include "platform/WideText.h"
#include "text/StringMap.h"

#include <string>
#include <string_view>

// The envelope configuration as text: "key: value; " for each entry in key order, plain or encoded.
namespace Text {

// Writes each byte as a signed decimal number followed by "&". Takes the text's contents: it is empty afterwards.
std::string encodeCharCodes(std::string& text);

// The map behind an encoded configuration text. Left out are entries that do not come apart into exactly one key and
// one value, and a lone entry without "; " after it.
StringMap decodeConfigMap(std::string_view encoded);

std::string formatConfigMap(const StringMap& entries);

// Writes a map into the caller's UTF-16 buffer.
void formatConfigMapWide(const StringMap& entries, WideChar* destination);

} // namespace Text
