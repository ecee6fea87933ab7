#pragma once

#include "Status.h"
#include "Wire.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

class Reply
{
public:
    Reply(Tag code, Status status, std::string_view statusMessage);

    Reply& text(Tag tag, std::string_view value);
    Reply& number(Tag tag, std::int32_t value);
    Reply& longNumber(Tag tag, std::int64_t value);
    Reply& real(Tag tag, double value);
    Reply& map(Tag tag, const StringMap& value);
    Reply& array(Tag tag, const std::vector<std::string>& items);
    // A collection whose items are themselves made of parameters.
    Reply& items(Tag tag, const std::vector<std::string>& items);

    const Message& message() const { return message_; }

private:
    Reply& add(Tag tag, Kind kind, std::string value);

    Message message_;
};

} // namespace standin
