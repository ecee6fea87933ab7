#include "Reply.h"

#include <bit>
#include <utility>

namespace standin {

Reply::Reply(Tag code, Status status, std::string_view statusMessage)
{
    message_.code = code;
    std::string value;
    appendNumber(value, static_cast<std::int16_t>(status));
    add(tag("st"), Kind::Short, std::move(value));
    text(tag("em"), statusMessage);
}

Reply& Reply::add(Tag tag, Kind kind, std::string value)
{
    message_.parameters.push_back({tag, kind, std::move(value)});
    return *this;
}

Reply& Reply::text(Tag tag, std::string_view value)
{
    return add(tag, Kind::Text, std::string(value));
}

Reply& Reply::number(Tag tag, std::int32_t number)
{
    std::string value;
    appendNumber(value, number);
    return add(tag, Kind::Int, std::move(value));
}

Reply& Reply::longNumber(Tag tag, std::int64_t number)
{
    std::string value;
    appendNumber(value, number);
    return add(tag, Kind::Long, std::move(value));
}

Reply& Reply::real(Tag tag, double number)
{
    std::string value;
    appendNumber(value, std::bit_cast<std::uint64_t>(number));
    return add(tag, Kind::Double, std::move(value));
}

Reply& Reply::map(Tag tag, const StringMap& map)
{
    return add(tag, Kind::Map, encodeMap(map));
}

Reply& Reply::array(Tag tag, const std::vector<std::string>& items)
{
    return add(tag, Kind::Array, encodeArray(items));
}

Reply& Reply::items(Tag tag, const std::vector<std::string>& items)
{
    return add(tag, Kind::Items, encodeArray(items));
}

} // namespace standin
