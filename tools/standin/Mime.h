#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace standin {

struct MimeItem
{
    static constexpr std::int32_t body = 1;
    static constexpr std::int32_t attachment = 2;
    static constexpr std::int32_t shownInline = 1; // has a Content-ID or an inline disposition
    static constexpr std::int32_t nameMadeUp = 2;  // the message gave it no name

    std::int32_t type = attachment;
    std::int32_t flags = 0;
    std::string name;
    std::string contentType;
    std::string data; // decoded
};

struct MimeMessage
{
    std::string subject;
    std::int32_t sensitivity = 0; // 0 none, 1 personal, 2 private, 3 company-confidential
    std::vector<MimeItem> items;  // the leaves, in the message's order
};

// Throws a Refusal for bytes that are not a MIME message.
MimeMessage splitMime(const std::string& source);

} // namespace standin
