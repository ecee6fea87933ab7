#include "Commands.h"

#include <algorithm>

namespace standin {

namespace {

constexpr ParameterRule text(const char (&letters)[3])
{
    return {tag(letters), Kind::Text};
}

constexpr ParameterRule list(const char (&letters)[3])
{
    return {tag(letters), Kind::Text, true};
}

constexpr ParameterRule map(const char (&letters)[3])
{
    return {tag(letters), Kind::Map};
}

constexpr ParameterRule flag(const char (&letters)[3])
{
    return {tag(letters), Kind::Bool};
}

constexpr ParameterRule number(const char (&letters)[3])
{
    return {tag(letters), Kind::Int};
}

constexpr ParameterRule date(const char (&letters)[3])
{
    return {tag(letters), Kind::Long};
}

const std::vector<CommandRule>& commands()
{
    // clang-format off
    static const std::vector<CommandRule> rules = {
        {tag("ST"), false, {}},
        {tag("SD"), false, {}},
        {tag("LS"), true, {text("tc"), text("to"), text("ky"), text("ep")}},
        {tag("VC"), true, {text("ep"), text("fm")}},
        {tag("BE"), true, {text("tc"), map("sl"), text("fm"), list("to"), list("cc"), list("bc"), map("ec"), text("ep"),
                           text("mm")}},
        {tag("DE"), true, {text("ky"), text("en"), text("ep"), text("to"), text("sk"), flag("po")}},
        {tag("MI"), true, {text("tc"), text("ky"), text("en"), text("ep"), text("fm"), text("sf"), flag("as"),
                           number("si"), number("mx")}},
        {tag("SI"), true, {text("tc"), text("ky"), text("en"), text("ep"), text("to"), map("ri"), flag("ls"),
                           text("sm"), date("ed")}},
        {tag("KV"), false, {text("ep")}},
        {tag("LT"), false, {text("ep")}},
        {tag("EP"), false, {text("tc"), map("ec"), text("ea"), text("ul")}},
        {tag("EU"), true, {text("tc"), map("ec"), text("ea"), text("fn"), text("ln"), text("pw"), text("pc"),
                           text("es"), text("ul"), number("or"), number("el"), number("zo"), text("pp"), number("pe"),
                           map("qa")}},
    };
    // clang-format on
    return rules;
}

} // namespace

const ParameterRule* CommandRule::find(Tag wanted) const
{
    const auto rule = std::ranges::find(parameters, wanted, &ParameterRule::tag);
    return rule == parameters.end() ? nullptr : &*rule;
}

const CommandRule* findCommand(Tag code)
{
    const auto rule = std::ranges::find(commands(), code, &CommandRule::code);
    return rule == commands().end() ? nullptr : &*rule;
}

} // namespace standin
