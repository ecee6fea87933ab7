#include "Wire.h"

#include "Limits.h"

#include <cctype>
#include <cstdio>
#include <zlib.h>

namespace standin {

namespace {

std::string_view takeSized(std::string_view value, std::size_t& offset, const std::string& what)
{
    if (value.size() - offset < 4) {
        throw WireError(offset, "the map ends inside the length of a " + what);
    }
    const auto length = readNumber<std::int32_t>(value.substr(offset));
    if (length < 0 || static_cast<std::size_t>(length) > value.size() - offset - 4) {
        throw WireError(offset, "the length of a " + what + " does not fit into its map");
    }
    const auto bytes = value.substr(offset + 4, static_cast<std::size_t>(length));
    offset += 4 + bytes.size();
    return bytes;
}

} // namespace

void appendSized(std::string& out, std::string_view bytes)
{
    if (bytes.size() > INT32_MAX) {
        throw std::length_error("a value of the reply is longer than the format can say");
    }
    appendNumber(out, static_cast<std::int32_t>(bytes.size()));
    out.append(bytes);
}

void appendParameter(std::string& out, Tag tag, std::string_view value)
{
    appendNumber(out, tag);
    appendSized(out, value);
}

std::string encodeMap(const StringMap& map)
{
    std::string value;
    for (const auto& [key, text] : map) {
        appendSized(value, key);
        appendSized(value, text);
    }
    return value;
}

StringMap decodeMap(std::string_view value)
{
    StringMap map;
    std::size_t offset = 0;
    while (offset < value.size()) {
        const std::size_t start = offset;
        const auto key = takeSized(value, offset, "key");
        const auto text = takeSized(value, offset, "value");
        if (!map.empty() && !(std::string_view(map.rbegin()->first) < key)) {
            throw WireError(start, "the keys of the map do not ascend");
        }
        if (map.size() == limit::mapEntries) {
            throw WireError(start, "the map has more than " + std::to_string(limit::mapEntries) + " entries");
        }
        map.emplace_hint(map.end(), key, text);
    }
    return map;
}

std::string encodeArray(const std::vector<std::string>& items)
{
    std::string value;
    for (const auto& item : items) {
        appendSized(value, item);
    }
    return value;
}

std::vector<std::string_view> decodeArray(std::string_view value)
{
    std::vector<std::string_view> items;
    for (std::size_t offset = 0; offset < value.size();) {
        items.push_back(takeSized(value, offset, "item"));
    }
    return items;
}

std::string encodeFrame(const Message& message)
{
    std::size_t size = 10;
    for (const auto& parameter : message.parameters) {
        size += 6 + parameter.value.size();
    }
    std::string frame;
    frame.reserve(size);
    appendNumber(frame, protocolVersion);
    appendNumber(frame, message.code);
    for (const auto& parameter : message.parameters) {
        appendParameter(frame, parameter.tag, parameter.value);
    }
    appendNumber(frame, endMarker);
    const auto crc = crc32_z(0, reinterpret_cast<const Bytef*>(frame.data()), frame.size());
    appendNumber(frame, static_cast<std::uint32_t>(crc));
    return frame;
}

std::string lettersOf(Tag tag)
{
    return {static_cast<char>(tag >> 8), static_cast<char>(tag & 0xFF)};
}

std::string tagName(Tag tag)
{
    if (std::isprint(tag >> 8) != 0 && std::isprint(tag & 0xFF) != 0) {
        return "'" + lettersOf(tag) + "'";
    }
    char hex[8];
    std::snprintf(hex, sizeof hex, "0x%04X", static_cast<unsigned>(tag));
    return hex;
}

} // namespace standin
