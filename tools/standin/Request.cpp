#include "Request.h"

#include <algorithm>

namespace standin {

const std::string* Request::find(Tag tag) const
{
    const auto found = std::ranges::find(message_.parameters, tag, &Parameter::tag);
    return found == message_.parameters.end() ? nullptr : &found->value;
}

const std::string& Request::text(Tag tag) const
{
    static const std::string none;
    const auto* value = find(tag);
    return value ? *value : none;
}

std::vector<std::string> Request::texts(Tag tag) const
{
    std::vector<std::string> found;
    for (const auto& parameter : message_.parameters)
        if (parameter.tag == tag)
            found.push_back(parameter.value);
    return found;
}

bool Request::flag(Tag tag) const
{
    const auto* value = find(tag);
    return value && readNumber<std::uint8_t>(*value) != 0;
}

std::int32_t Request::number(Tag tag) const
{
    const auto* value = find(tag);
    return value ? readNumber<std::int32_t>(*value) : 0;
}

std::int64_t Request::longNumber(Tag tag) const
{
    const auto* value = find(tag);
    return value ? readNumber<std::int64_t>(*value) : 0;
}

StringMap Request::map(Tag tag) const
{
    return decodeMap(text(tag));
}

} // namespace standin
