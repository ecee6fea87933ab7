#include "Commands.h"

#include <algorithm>

namespace standin {

std::span<const CommandRule> commands()
{
    using enum Kind;
    const auto secret = [](const char(&letters)[3]) { return ParameterRule(letters, Secret, limit::password); };
    const auto large = [](const char(&letters)[3]) { return ParameterRule(letters, Text, limit::request); };
    // clang-format off
    static const std::vector<CommandRule> rules = {
        {tag("ST"), daemonStatus, false, {}},
        {tag("SD"), stopDaemon, false, {}},
        {tag("LS"), login, true, {"tc", "to", secret("ky"), "ep"}},
        {tag("VC"), verifyConfiguration, true, {"ep", "fm"}},
        {tag("BE"), buildEnvelope, true,
         {"tc", {"sl", Map}, "fm", {"to", Recipient}, {"cc", Recipient}, {"bc", Recipient}, {"ec", Map}, "ep",
          large("mm")}},
        {tag("DE"), openEnvelope, true, {secret("ky"), large("en"), "ep", "to", secret("sk"), {"po", Bool}}},
        {tag("MI"), messageInformation, true,
         {"tc", secret("ky"), large("en"), "ep", "fm", "sf", {"as", Bool}, {"si", Int}, {"mx", Int}}},
        {tag("SI"), setInformation, true,
         {"tc", secret("ky"), large("en"), "ep", "to", {"ri", Map}, {"ls", Bool}, {"sm", Text, limit::statusMessage},
          {"ed", Long}}},
        {tag("KV"), keyServerVersion, false, {"ep"}},
        {tag("LT"), localizedTexts, false, {"ep"}},
        {tag("EP"), enrollmentParameters, false, {"tc", {"ec", Map}, "ea", "ul"}},
        {tag("EU"), enrollUser, true,
         {"tc", {"ec", Map}, "ea", "fn", "ln", secret("pw"), "pc", "es", "ul", {"or", Int}, {"el", Int}, {"zo", Int},
          secret("pp"), {"pe", Int}, {"qa", Map}}},
    };
    // clang-format on
    return rules;
}

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
