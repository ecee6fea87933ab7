#include "Handlers.h"
#include "Languages.h"
#include "Texts.h"

namespace standin {

namespace {

constexpr std::int32_t questionsToAnswer = 3;

StringMap questionTexts(std::string_view language)
{
    if (language == "de") {
        return {{"1", "Wie hieß Ihr erstes Haustier?"},
                {"2", "In welcher Stadt sind Sie geboren?"},
                {"3", "Wie hieß Ihre erste Schule?"},
                {"4", "Was ist Ihr Lieblingsbuch?"},
                {"5", "Wie heißt Ihr ältester Freund?"}};
    }
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
    demand(isAddress(address), Status::BadValue, "the address to enroll is not an e-mail address");
    StringMap locales;
    for (const auto& language : languages()) {
        locales[std::string(language.locale)] = language.name;
    }
    // Two domains show the other forms: one whose users sign on elsewhere, one whose users enroll with one click.
    const bool singleSignOn = address.ends_with("@sso.example.com");
    const bool oneClick = address.ends_with("@oneclick.example.com");
    return Reply(request.code(), Status::Ok, "enrollment parameters")
        .number(tag("su"), int{singleSignOn})
        .number(tag("ou"), int{oneClick})
        .number(tag("qn"), singleSignOn || oneClick ? 0 : questionsToAnswer)
        .number(tag("qe"), 1)
        .map(tag("al"), locales)
        .map(tag("sq"), questionTexts(languageOf(request.text(tag("ul"))).locale));
}

} // namespace standin
