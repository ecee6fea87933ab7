#pragma once

#include "Status.h"
#include "Wire.h"

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace standin {

class Reply
{
public:
    // A status message that is too long to be passed on is cut.
    Reply(Tag code, Status status, std::string_view statusMessage);
    // With the seconds to wait where there are some.
    Reply(Tag code, const Verdict& verdict);

    Reply& text(Tag tag, std::string_view value) { return add(tag, Kind::Text, std::string(value)); }
    Reply& secret(Tag tag, std::string_view value) { return add(tag, Kind::Secret, std::string(value)); }
    Reply& number(Tag tag, std::int16_t value) { return add(tag, Kind::Short, encodeNumber(value)); }
    Reply& number(Tag tag, std::int32_t value) { return add(tag, Kind::Int, encodeNumber(value)); }
    Reply& number(Tag tag, std::int64_t value) { return add(tag, Kind::Long, encodeNumber(value)); }
    Reply& number(Tag tag, double value)
    {
        return add(tag, Kind::Double, encodeNumber(std::bit_cast<std::uint64_t>(value)));
    }
    Reply& map(Tag tag, const StringMap& value) { return add(tag, Kind::Map, encodeMap(value)); }
    Reply& array(Tag tag, const std::vector<std::string>& items) { return add(tag, Kind::Array, encodeArray(items)); }
    // A collection whose items are themselves made of parameters.
    Reply& items(Tag tag, const std::vector<std::string>& items) { return add(tag, Kind::Items, encodeArray(items)); }

    Status status() const { return status_; }
    const Message& message() const { return message_; }

private:
    Reply& add(Tag tag, Kind kind, std::string value)
    {
        message_.parameters.push_back({tag, kind, std::move(value)});
        return *this;
    }

    Status status_;
    Message message_;
};

} // namespace standin
