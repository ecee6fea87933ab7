#pragma once

#include "Wire.h"

#include <vector>

// What each request may carry.
namespace standin {

struct ParameterRule
{
    Tag tag;
    Kind kind;
    bool repeats = false;
};

struct CommandRule
{
    Tag code;
    bool usesStore;
    std::vector<ParameterRule> parameters;

    const ParameterRule* find(Tag tag) const;
};

// Null when there is no such command.
const CommandRule* findCommand(Tag code);

} // namespace standin
