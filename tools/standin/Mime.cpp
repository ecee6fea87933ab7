#include "Mime.h"

#include "Status.h"
#include "Texts.h"

#include <algorithm>
#include <gmime/gmime.h>
#include <map>
#include <memory>
#include <string_view>

namespace standin {

namespace {

struct Unref
{
    void operator()(void* object) const { g_object_unref(object); }
};

template <class Object>
using Owned = std::unique_ptr<Object, Unref>;

std::string textOf(const char* text)
{
    return text ? text : "";
}

Owned<GMimeMessage> parse(const std::string& source)
{
    static const bool started = (g_mime_init(), true);
    static_cast<void>(started);
    const Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(source.data(), source.size()));
    const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    return Owned<GMimeMessage>(g_mime_parser_construct_message(parser.get(), nullptr));
}

int headerCount(GMimeObject* object)
{
    return g_mime_header_list_get_count(g_mime_object_get_header_list(object));
}

std::int32_t sensitivityOf(GMimeMessage* message)
{
    auto value = normalAddress(textOf(g_mime_object_get_header(GMIME_OBJECT(message), "Sensitivity")));
    constexpr std::string_view levels[] = {"", "personal", "private", "company-confidential"};
    const auto level = std::ranges::find(levels, value);
    return level == std::end(levels) ? 0 : static_cast<std::int32_t>(level - std::begin(levels));
}

std::string written(GMimeStream* stream)
{
    const auto* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream));
    return {reinterpret_cast<const char*>(bytes->data), bytes->len};
}

std::string decodedData(GMimeObject* leaf, GMimeFormatOptions* format)
{
    const Owned<GMimeStream> out(g_mime_stream_mem_new());
    if (GMIME_IS_MESSAGE_PART(leaf)) {
        auto* inner = g_mime_message_part_get_message(GMIME_MESSAGE_PART(leaf));
        if (inner) {
            g_mime_object_write_to_stream(GMIME_OBJECT(inner), format, out.get());
        }
    } else if (GMIME_IS_PART(leaf)) {
        auto* content = g_mime_part_get_content(GMIME_PART(leaf));
        if (content) {
            g_mime_data_wrapper_write_to_stream(content, out.get());
        }
    }
    return written(out.get());
}

std::string contentTypeOf(GMimeObject* leaf)
{
    auto* type = g_mime_object_get_content_type(leaf);
    char* name = g_mime_content_type_get_mime_type(type);
    std::string text = textOf(name);
    g_free(name);
    if (const char* charset = g_mime_content_type_get_parameter(type, "charset")) {
        text += std::string("; charset=") + charset;
    }
    return text;
}

std::string_view extensionFor(GMimeObject* leaf)
{
    auto* type = g_mime_object_get_content_type(leaf);
    if (GMIME_IS_MESSAGE_PART(leaf)) {
        return ".eml";
    }
    if (g_mime_content_type_is_type(type, "text", "html")) {
        return ".html";
    }
    return g_mime_content_type_is_type(type, "text", "*") ? ".txt" : ".bin";
}

std::string givenName(GMimeObject* leaf)
{
    if (GMIME_IS_PART(leaf)) {
        return textOf(g_mime_part_get_filename(GMIME_PART(leaf)));
    }
    const char* name = g_mime_object_get_content_disposition_parameter(leaf, "filename");
    return textOf(name ? name : g_mime_object_get_content_type_parameter(leaf, "name"));
}

// Names for items that have none: body.txt, body-2.txt and so on.
class NameMaker
{
public:
    std::string make(const std::string& stem, std::string_view extension)
    {
        const int number = ++counts_[stem + std::string(extension)];
        return stem + (number == 1 ? "" : "-" + std::to_string(number)) + std::string(extension);
    }

private:
    std::map<std::string, int> counts_;
};

struct FreeFormat
{
    void operator()(GMimeFormatOptions* format) const { g_mime_format_options_free(format); }
};

// An attached message is written anew: with the line ends that the source has.
std::unique_ptr<GMimeFormatOptions, FreeFormat> formatLike(const std::string& source)
{
    std::unique_ptr<GMimeFormatOptions, FreeFormat> format(g_mime_format_options_new());
    const auto lineEnd = source.find('\n');
    const bool dos = lineEnd != std::string::npos && lineEnd > 0 && source[lineEnd - 1] == '\r';
    g_mime_format_options_set_newline_format(format.get(), dos ? GMIME_NEWLINE_FORMAT_DOS : GMIME_NEWLINE_FORMAT_UNIX);
    return format;
}

MimeItem itemFrom(GMimeObject* leaf, NameMaker& names, GMimeFormatOptions* format)
{
    MimeItem item;
    auto* disposition = g_mime_object_get_content_disposition(leaf);
    const bool text = g_mime_content_type_is_type(g_mime_object_get_content_type(leaf), "text", "*");
    item.name = givenName(leaf);
    if (text && item.name.empty() && !(disposition && g_mime_content_disposition_is_attachment(disposition))) {
        item.type = MimeItem::body;
    }
    if (g_mime_object_get_content_id(leaf) ||
        (disposition && textOf(g_mime_content_disposition_get_disposition(disposition)) == GMIME_DISPOSITION_INLINE)) {
        item.flags |= MimeItem::shownInline;
    }
    if (item.name.empty()) {
        item.flags |= MimeItem::nameMadeUp;
        item.name = names.make(item.type == MimeItem::body ? "body" : "attachment", extensionFor(leaf));
    }
    item.contentType = contentTypeOf(leaf);
    item.data = decodedData(leaf, format);
    return item;
}

} // namespace

MimeMessage splitMime(const std::string& source)
{
    const auto message = parse(source);
    auto* root = message ? g_mime_message_get_mime_part(message.get()) : nullptr;
    // The parser keeps the headers that describe the content with the root, and the others with the message.
    demand(root && headerCount(GMIME_OBJECT(message.get())) + headerCount(root) > 0, Status::NotAMessage,
           "the message is not a MIME message: it has no header");

    MimeMessage split;
    split.subject = textOf(g_mime_message_get_subject(message.get()));
    split.sensitivity = sensitivityOf(message.get());
    const auto format = formatLike(source);
    NameMaker names;
    std::vector<GMimeObject*> pending = {root};
    while (!pending.empty()) {
        auto* object = pending.back();
        pending.pop_back();
        if (GMIME_IS_MULTIPART(object)) {
            for (int i = g_mime_multipart_get_count(GMIME_MULTIPART(object)); i > 0; --i) {
                pending.push_back(g_mime_multipart_get_part(GMIME_MULTIPART(object), i - 1));
            }
        } else {
            split.items.push_back(itemFrom(object, names, format.get()));
        }
    }
    // Also what is left of multiparts nested thousands deep, which the parser gives up on.
    demand(!split.items.empty(), Status::NotAMessage, "the message has neither a body nor an attachment");
    return split;
}

} // namespace standin
