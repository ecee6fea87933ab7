#pragma once

#include "Status.h"

#include <string>
#include <string_view>

// The envelope: an HTML document that refers to a stored message by its id. Nothing in it is encrypted.
namespace standin {

inline constexpr std::string_view envelopeFileName = "tarn-envelope.html";
inline constexpr std::string_view envelopeContentType = "text/html; charset=utf-8";

std::string makeEnvelope(const std::string& messageId, const std::string& sender);

// The message id of an envelope. Blanks and line ends may have changed on the way, nothing else. Throws a Refusal for
// a damaged envelope and for any other text.
std::string readEnvelope(std::string_view envelope);

} // namespace standin
