#include "Envelope.h"

#include "Texts.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <zlib.h>

namespace standin {

namespace {

constexpr std::string_view marker = "name=\"tarn-envelope\" content=\"";
constexpr std::size_t idSize = 32;
constexpr std::size_t checkSize = 8;

std::string checkOf(std::string_view beforeCheck, std::string_view afterCheck)
{
    std::string significant;
    for (const auto piece : {beforeCheck, afterCheck}) {
        std::ranges::copy_if(piece, std::back_inserter(significant), [](char c) {
            return trimmed({&c, 1}).size() == 1;
        });
    }
    const auto crc = crc32_z(0, reinterpret_cast<const Bytef*>(significant.data()), significant.size());
    char text[checkSize + 1];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(crc));
    return text;
}

} // namespace

std::string makeEnvelope(const std::string& messageId, const std::string& sender)
{
    const std::string beforeCheck = "<!DOCTYPE html>\n"
                                    "<html lang=\"en\">\n"
                                    "<head>\n"
                                    "<meta charset=\"utf-8\">\n"
                                    "<title>Message from " +
                                    escapeHtml(sender) +
                                    "</title>\n"
                                    "<meta " +
                                    std::string(marker) + messageId + " ";
    const std::string afterCheck =
        "\">\n"
        "</head>\n"
        "<body>\n"
        "<h1>A message from " +
        escapeHtml(sender) +
        " waits for you</h1>\n"
        "<p>Open this file with your mail program's plug-in.</p>\n"
        "<p><strong>Nothing here is encrypted.</strong> This envelope was made by tarn-standin, a stand-in daemon for "
        "development and demonstration. The message itself lies unencrypted in the store of that daemon; this file "
        "only refers to it.</p>\n"
        "</body>\n"
        "</html>\n";
    return beforeCheck + checkOf(beforeCheck, afterCheck) + afterCheck;
}

std::string readEnvelope(std::string_view envelope)
{
    const auto at = envelope.find(marker);
    demand(at != std::string_view::npos, Status::NoEnvelope, "this is not an envelope");
    const auto content = envelope.substr(at + marker.size());
    demand(content.size() >= idSize + 1 + checkSize, Status::DamagedEnvelope, "the envelope is damaged: it ends early");
    const auto checkAt = at + marker.size() + idSize + 1;
    if (content.substr(idSize + 1, checkSize) !=
        checkOf(envelope.substr(0, checkAt), envelope.substr(checkAt + checkSize))) {
        throw Refusal{Status::DamagedEnvelope, "the envelope is damaged: its text was changed"};
    }
    return std::string(content.substr(0, idSize));
}

} // namespace standin
