#include "Accounts.h"
#include "Configuration.h"
#include "Handlers.h"
#include "Limits.h"
#include "Texts.h"

namespace standin {

namespace {

std::string senderProblem(const std::string& sender, Database& database)
{
    if (sender.empty()) {
        return "is missing";
    }
    if (!isAddress(sender)) {
        return "is not an e-mail address";
    }
    const auto account = Accounts(database).find(sender);
    if (!account) {
        return "has no account";
    }
    return account->state == AccountState::Active ? "" : "has an account that is not active";
}

} // namespace

Reply verifyConfiguration(const Request& request, Context& context)
{
    StringMap problems;
    Status status = Status::ConfigurationWrong;
    if (!request.text(tag("ep")).empty()) {
        try {
            problems = configurationProblems(namedConfiguration(request, context));
        } catch (const Refusal& refusal) {
            problems["file"] = refusal.message;
            status = refusal.status;
        }
    }
    if (auto problem = senderProblem(normalAddress(request.text(tag("fm"))), context.database); !problem.empty()) {
        problems["sender"] = std::move(problem);
    }

    if (problems.empty()) {
        return Reply(request.code(), Status::Ok, "nothing is wrong").map(tag("ec"), {});
    }
    std::string summary = std::to_string(problems.size()) + (problems.size() == 1 ? " problem" : " problems");
    StringMap named;
    for (const auto& [where, what] : problems) {
        if (named.size() < limit::problems) {
            summary += (named.empty() ? ": " : "; ") + where + ": " + what;
            named.emplace(where, what);
        }
    }
    return Reply(request.code(), status, summary).map(tag("ec"), named);
}

} // namespace standin
