#pragma once

#include "Wire.h"
#include "protocol/CommandInputStream.h"

#include <vector>

// A kind of reply, and how one is read and taken apart.
struct ReplyClass
{
    std::string code;
    // Reads a reply and returns all its fields as the parameters that would make it again, in a fixed order.
    wire::Params (*read)(Merrow::CommandInputStream& in);
};

const std::vector<ReplyClass>& replyClasses();
