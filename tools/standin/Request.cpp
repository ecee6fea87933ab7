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
    for (const auto& parameter : message_.parameters) {
        if (parameter.tag == tag) {
            found.push_back(parameter.value);
        }
    }
    return found;
}

} // namespace standin
