#include "Accounts.h"
#include "Handlers.h"
#include "LocalizedTexts.h"
#include "Password.h"
#include "Texts.h"

#include <algorithm>
#include <array>
#include <set>

namespace standin {

namespace {

constexpr std::int32_t formStage = 0;
constexpr std::int32_t confirmStage = 1;
constexpr std::int32_t doneStage = 2;

constexpr std::array<std::string_view, 3> numbers = {"1", "2", "3"};

constexpr std::size_t minPasswordLength = 8;

std::string passwordProblem(std::string_view password)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto isLetter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
    };
    const auto characters =
        std::ranges::count_if(password, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
    if (static_cast<std::size_t>(characters) < minPasswordLength)
        return "is shorter than " + std::to_string(minPasswordLength) + " characters";
    if (std::ranges::none_of(password, isLetter) || std::ranges::none_of(password, isDigit))
        return "needs a letter and a digit";
    return {};
}

std::string valueOf(const StringMap& map, const std::string& key)
{
    const auto found = map.find(key);
    return found == map.end() ? std::string() : std::string(trimmed(found->second));
}

void checkQuestions(const StringMap& form, StringMap& problems)
{
    std::set<std::string> seen;
    for (const auto number : numbers) {
        const auto questionKey = "securityQuestion" + std::string(number);
        const auto answerKey = "securityAnswer" + std::string(number);
        const auto question = valueOf(form, questionKey);
        if (question.empty())
            problems[questionKey] = "is missing";
        else if (!seen.insert(question).second)
            problems[questionKey] = "is asked twice";
        if (valueOf(form, answerKey).empty())
            problems[answerKey] = "is missing";
    }
}

StringMap formProblems(const Request& request)
{
    StringMap problems;
    if (trimmed(request.text(tag("fn"))).empty())
        problems["firstName"] = "is missing";
    if (trimmed(request.text(tag("ln"))).empty())
        problems["lastName"] = "is missing";
    if (auto problem = passwordProblem(request.text(tag("pw"))); !problem.empty())
        problems["password"] = std::move(problem);
    const auto sender = normalAddress(request.text(tag("es")));
    if (!sender.empty() && !isAddress(sender))
        problems["senderEmailAddress"] = "is not an e-mail address";
    const bool simpleRegistration = request.number(tag("or")) != 0;
    if (!simpleRegistration)
        checkQuestions(request.map(tag("qa")), problems);
    return problems;
}

Reply refuseForm(const Request& request, const std::string& message, const StringMap& problems)
{
    std::string text = message;
    for (const auto& [field, problem] : problems)
        text += (field == problems.begin()->first ? ": " : "; ") + field + " " + problem;
    return Reply(request.code(), Status::FormRefused, text)
        .number(tag("el"), request.number(tag("el")))
        .map(tag("ve"), problems);
}

void storeAccount(const Request& request, const std::string& address, Database& database)
{
    const auto name =
        std::string(trimmed(request.text(tag("fn")))) + " " + std::string(trimmed(request.text(tag("ln"))));
    database.execute("INSERT INTO accounts (address, name, locale, password, state) VALUES (?, ?, ?, ?, ?)"
                     " ON CONFLICT (address) DO UPDATE SET name = excluded.name, locale = excluded.locale,"
                     " password = excluded.password, failures = 0, blockedUntil = 0",
                     address, name, localizedText(request.text(tag("ul"))).locale,
                     hashPassword(request.text(tag("pw"))), static_cast<std::int64_t>(AccountState::Unconfirmed));
    database.execute("DELETE FROM answers WHERE address = ?", address);
    const auto form = request.map(tag("qa"));
    for (const auto number : numbers) {
        const auto question = valueOf(form, "securityQuestion" + std::string(number));
        const auto answer = valueOf(form, "securityAnswer" + std::string(number));
        if (!question.empty() && !answer.empty())
            database.execute("INSERT INTO answers (address, question, answer) VALUES (?, ?, ?)", address, question,
                             hashPassword(answer));
    }
}

Reply takeForm(const Request& request, const std::string& address, Database& database)
{
    const auto problems = formProblems(request);
    if (!problems.empty())
        return refuseForm(request, "the form is refused", problems);
    storeAccount(request, address, database);
    return Reply(request.code(), Status::Ok, "the form is accepted; the enrollment is to be confirmed")
        .number(tag("el"), confirmStage)
        .map(tag("ve"), {{"account", "unconfirmed"}, {"emailAddress", address}, {"enrollmentStage", "1"}});
}

Reply confirm(const Request& request, const std::string& address, Database& database)
{
    auto row = database.query("SELECT password FROM accounts WHERE address = ?", address);
    if (!row.step())
        return refuseForm(request, "the enrollment is refused",
                          {{"enrollmentStage", "comes before the form was accepted"}});
    if (!verifyPassword(request.text(tag("pw")), row.text(0)))
        return refuseForm(request, "the enrollment is refused", {{"password", "is not that of the accepted form"}});
    database.execute("UPDATE accounts SET state = ? WHERE address = ?", static_cast<std::int64_t>(AccountState::Active),
                     address);
    database.execute("DELETE FROM enrollments WHERE address = ?", address);
    return Reply(request.code(), Status::Ok, "the account is active")
        .number(tag("el"), doneStage)
        .map(tag("ve"), {{"account", "active"}, {"emailAddress", address}, {"enrollmentStage", "2"}});
}

StringMap questionTexts(std::string_view language)
{
    if (language == "de")
        return {{"1", "Wie hieß Ihr erstes Haustier?"},
                {"2", "In welcher Stadt sind Sie geboren?"},
                {"3", "Wie hieß Ihre erste Schule?"},
                {"4", "Was ist Ihr Lieblingsbuch?"},
                {"5", "Wie heißt Ihr ältester Freund?"}};
    return {{"1", "What was the name of your first pet?"},
            {"2", "In which town were you born?"},
            {"3", "What was the name of your first school?"},
            {"4", "What is your favourite book?"},
            {"5", "What is the name of your oldest friend?"}};
}

} // namespace

Reply enrollmentParameters(const Request& request, Context&)
{
    const auto address = normalAddress(request.text(tag("ea")));
    if (!isAddress(address))
        throw Refusal{Status::BadValue, "the address to enroll is not an e-mail address"};
    StringMap locales;
    for (const auto& text : allLocalizedTexts())
        locales[std::string(text.locale)] = text.name;
    // Two domains show the other forms: one whose users sign on elsewhere, one whose users enroll with one click.
    const bool singleSignOn = address.ends_with("@sso.example.com");
    const bool oneClick = address.ends_with("@oneclick.example.com");
    return Reply(request.code(), Status::Ok, "enrollment parameters")
        .number(tag("su"), singleSignOn)
        .number(tag("ou"), oneClick)
        .number(tag("qn"), singleSignOn || oneClick ? 0 : static_cast<std::int32_t>(numbers.size()))
        .number(tag("qe"), 1)
        .map(tag("al"), locales)
        .map(tag("sq"), questionTexts(localizedText(request.text(tag("ul"))).locale));
}

Reply enrollUser(const Request& request, Context& context)
{
    const auto address = normalAddress(request.text(tag("ea")));
    if (!isAddress(address))
        return refuseForm(request, "the form is refused", {{"emailAddress", "is not an e-mail address"}});
    Accounts accounts(context.database);
    const auto account = accounts.find(address);
    if (account && account->state != AccountState::Unconfirmed)
        return Reply(request.code(), Status::AccountExists, "this address has an account already")
            .number(tag("el"), request.number(tag("el")))
            .map(tag("ve"), {{"emailAddress", "has an account already"}});
    if (!accounts.isEnrollmentId(trimmed(request.text(tag("pc"))), address))
        return refuseForm(request, "the form is refused",
                          {{"enrollUuid", "is not the enrollment id given out for this address"}});
    switch (request.number(tag("el"))) {
    case formStage:
        return takeForm(request, address, context.database);
    case confirmStage:
        return confirm(request, address, context.database);
    default:
        return refuseForm(request, "the form is refused", {{"enrollmentStage", "is neither 0 nor 1"}});
    }
}

} // namespace standin
