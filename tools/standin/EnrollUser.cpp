#include "Accounts.h"
#include "Handlers.h"
#include "Languages.h"
#include "Limits.h"
#include "Password.h"
#include "Texts.h"

#include <algorithm>
#include <set>

namespace standin {

namespace {

constexpr std::int32_t formStage = 0;
constexpr std::int32_t confirmStage = 1;
constexpr std::int32_t doneStage = 2;

constexpr std::size_t minPasswordLength = 8;

struct SecurityQuestion
{
    std::string question;
    std::string answer;
};

std::string valueOf(const StringMap& map, const std::string& key)
{
    const auto found = map.find(key);
    return found == map.end() ? std::string() : std::string(trimmed(found->second));
}

// The three of the form, by their numbers in it.
std::map<std::string, SecurityQuestion> securityQuestions(const Request& request)
{
    const auto form = request.map(tag("qa"));
    std::map<std::string, SecurityQuestion> questions;
    for (const std::string number : {"1", "2", "3"}) {
        questions[number] = {valueOf(form, "securityQuestion" + number), valueOf(form, "securityAnswer" + number)};
    }
    return questions;
}

// What keeps a text from being hashed.
std::string secretProblem(const std::string& secret)
{
    if (secret.find('\0') != std::string::npos) {
        return "has a zero byte";
    }
    return secret.size() > limit::password ? "is longer than " + std::to_string(limit::password) + " bytes" : "";
}

std::string passwordProblem(const std::string& password)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto isLetter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
    };
    const auto characters =
        std::ranges::count_if(password, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
    if (static_cast<std::size_t>(characters) < minPasswordLength) {
        return "is shorter than " + std::to_string(minPasswordLength) + " characters";
    }
    if (std::ranges::none_of(password, isLetter) || std::ranges::none_of(password, isDigit)) {
        return "needs a letter and a digit";
    }
    return secretProblem(password);
}

StringMap formProblems(const Request& request)
{
    const auto missing = [](std::string_view text) { return trimmed(text).empty() ? "is missing" : ""; };
    const auto sender = normalAddress(request.text(tag("es")));
    StringMap problems = {
        {"firstName", missing(request.text(tag("fn")))},
        {"lastName", missing(request.text(tag("ln")))},
        {"password", passwordProblem(request.text(tag("pw")))},
        {"senderEmailAddress", sender.empty() || isAddress(sender) ? "" : "is not an e-mail address"},
    };
    const bool simpleRegistration = request.number(tag("or")) != 0;
    std::set<std::string> asked;
    for (const auto& [number, given] : securityQuestions(request)) {
        auto& answerProblem = problems["securityAnswer" + number] = secretProblem(given.answer);
        if (!simpleRegistration) {
            const bool isNew = asked.insert(given.question).second;
            problems["securityQuestion" + number] = given.question.empty() ? "is missing"
                                                    : isNew                ? ""
                                                                           : "is asked twice";
            answerProblem += missing(given.answer);
        }
    }
    std::erase_if(problems, [](const auto& problem) { return problem.second.empty(); });
    return problems;
}

Reply refuseForm(const Request& request, const StringMap& problems, std::string text = "the form is refused")
{
    for (const auto& [field, problem] : problems) {
        text += (field == problems.begin()->first ? ": " : "; ") + field + " " + problem;
    }
    return Reply(request.code(), Status::FormRefused, text)
        .number(tag("el"), request.number(tag("el")))
        .map(tag("ve"), problems);
}

void storeAccount(const Request& request, const std::string& address, Database& database)
{
    execute(database,
            "INSERT INTO accounts (address, name, locale, password, state) VALUES (?, ?, ?, ?, ?)"
            " ON CONFLICT (address) DO UPDATE SET name = excluded.name, locale = excluded.locale,"
            " password = excluded.password, failures = 0, blockedUntil = 0",
            address,
            std::string(trimmed(request.text(tag("fn")))) + " " + std::string(trimmed(request.text(tag("ln")))),
            std::string(languageOf(request.text(tag("ul"))).locale), hashPassword(request.text(tag("pw"))),
            static_cast<int>(AccountState::Unconfirmed));
    execute(database, "DELETE FROM answers WHERE address = ?", address);
    for (const auto& [number, given] : securityQuestions(request)) {
        if (!given.question.empty() && !given.answer.empty()) {
            execute(database, "INSERT OR REPLACE INTO answers (address, question, answer) VALUES (?, ?, ?)", address,
                    given.question, hashPassword(given.answer));
        }
    }
}

Reply takeForm(const Request& request, const std::string& address, Database& database)
{
    if (const auto problems = formProblems(request); !problems.empty()) {
        return refuseForm(request, problems);
    }
    storeAccount(request, address, database);
    return Reply(request.code(), Status::Ok, "the form is accepted; the enrollment is to be confirmed")
        .number(tag("el"), confirmStage)
        .map(tag("ve"), {{"account", "unconfirmed"}, {"emailAddress", address}, {"enrollmentStage", "1"}});
}

Reply confirm(const Request& request, const std::string& address, Database& database)
{
    const auto account = Accounts(database).find(address);
    if (!account) {
        return refuseForm(request, {{"enrollmentStage", "comes before the form was accepted"}},
                          "the enrollment is refused");
    }
    if (!verifyPassword(request.text(tag("pw")), account->password)) {
        return refuseForm(request, {{"password", "is not that of the accepted form"}}, "the enrollment is refused");
    }
    execute(database, "UPDATE accounts SET state = ? WHERE address = ?", static_cast<int>(AccountState::Active),
            address);
    execute(database, "DELETE FROM enrollments WHERE address = ?", address);
    return Reply(request.code(), Status::Ok, "the account is active")
        .number(tag("el"), doneStage)
        .map(tag("ve"), {{"account", "active"}, {"emailAddress", address}, {"enrollmentStage", "2"}});
}

} // namespace

Reply enrollUser(const Request& request, Context& context)
{
    const auto address = normalAddress(request.text(tag("ea")));
    if (!isAddress(address)) {
        return refuseForm(request, {{"emailAddress", "is not an e-mail address"}});
    }
    const Accounts accounts(context.database);
    const auto account = accounts.find(address);
    if (account && account->state != AccountState::Unconfirmed) {
        return Reply(request.code(), Status::AccountExists, "this address has an account already")
            .number(tag("el"), request.number(tag("el")))
            .map(tag("ve"), {{"emailAddress", "has an account already"}});
    }
    if (!accounts.isEnrollmentId(std::string(trimmed(request.text(tag("pc")))), address)) {
        return refuseForm(request, {{"enrollUuid", "is not the enrollment id given out for this address"}});
    }
    switch (request.number(tag("el"))) {
    case formStage:
        return takeForm(request, address, context.database);
    case confirmStage:
        return confirm(request, address, context.database);
    default:
        return refuseForm(request, {{"enrollmentStage", "is neither 0 nor 1"}});
    }
}

} // namespace standin
