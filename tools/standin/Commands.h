#pragma once

#include "Handlers.h"
#include "Limits.h"
#include "Wire.h"

#include <span>
#include <vector>

// What each request may carry, and who answers it.
namespace standin {

struct ParameterRule
{
    constexpr ParameterRule(const char (&letters)[3], Kind valueKind = Kind::Text, std::size_t size = limit::text)
        : tag(standin::tag(letters)), kind(valueKind), maxSize(size)
    {
    }

    Tag tag;
    Kind kind;
    std::size_t maxSize;
    bool repeats() const { return kind == Kind::Recipient; }
};

struct CommandRule
{
    Tag code;
    Reply (*handler)(const Request& request, Context& context);
    bool usesStore;
    std::vector<ParameterRule> parameters;

    const ParameterRule* find(Tag tag) const;
};

std::span<const CommandRule> commands();

// Null when there is no such command.
const CommandRule* findCommand(Tag code);

} // namespace standin
