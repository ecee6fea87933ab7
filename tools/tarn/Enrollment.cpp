#include "Command.h"
#include "Failure.h"
#include "Secrets.h"
#include "Text.h"
#include "Time.h"

namespace tarn {

namespace {

constexpr int mostQuestions = 3;

struct EnrollOptions
{
    Enrollment form;
    std::string passwordFile;
    std::string passPhraseFile;
    std::vector<std::string> questions;
    std::string answersFile;
};

// A question may be given by its id or in its own words.
std::string wording(const std::string& question, const std::vector<KeyValue>& choices, bool editable)
{
    for (const auto& [id, text] : choices) {
        if (question == id || question == text) {
            return text;
        }
    }
    if (!editable) {
        throw Failure(Exit::usage, "\"" + question + "\" is not one of the security questions to choose from");
    }
    return question;
}

std::string chooseQuestion(int number, const std::vector<KeyValue>& choices, bool editable)
{
    std::string list = "Security questions to choose from:\n";
    for (const auto& [id, text] : choices) {
        list += "  " + printable(id) + "  " + printable(text) + "\n";
    }
    const std::string question = (number == 0 ? list : "") + "Question " + std::to_string(number + 1) +
                                 (editable ? " (id, or your own words)" : " (id)");
    return wording(askUnlessGiven("", "--question", question), choices, editable);
}

void fillInQuestions(Enrollment& form, const EnrollOptions& options, const EnrollParameters& parameters)
{
    const auto& choices = parameters.questions;
    const auto answers = options.answersFile.empty() ? std::vector<Secret>() : secretLines(options.answersFile);
    if (options.questions.size() > mostQuestions) {
        throw Failure(Exit::usage, "an enrollment can hold three security questions");
    }
    if (parameters.questionCount > mostQuestions) {
        throw Failure(Exit::refused, "the key server wants " + std::to_string(parameters.questionCount) +
                                         " security questions, and an enrollment can hold three");
    }
    const int count = std::max(parameters.questionCount, static_cast<int>(options.questions.size()));
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<std::size_t>(i);
        form.questions[i] = index < options.questions.size()
                                ? wording(options.questions[index], choices, parameters.questionsEditable)
                                : chooseQuestion(i, choices, parameters.questionsEditable);
        form.answers[i] = index < answers.size()
                              ? answers[index]
                              : readSecret({"", "--answers-file", "TARN_ANSWER_" + std::to_string(i + 1),
                                            "Answer to \"" + printable(form.questions[i]) + "\""});
    }
}

int stageIn(const std::vector<KeyValue>& result)
{
    for (const auto& [key, value] : result) {
        if (key == "enrollmentStage") {
            return std::atoi(value.c_str());
        }
    }
    return 0;
}

// The form goes out first; where the daemon then wants the enrollment confirmed, its answer names that stage.
std::vector<KeyValue> runStages(Client& client, Enrollment& form)
{
    constexpr int confirmation = 1;
    form.stage = 0;
    auto result = client.enroll(form);
    if (stageIn(result) != confirmation) {
        return result;
    }
    form.stage = confirmation;
    return client.enroll(form);
}

std::vector<KeyValue> fillInAndSend(Client& client, const EnrollOptions& options)
{
    Enrollment form = options.form;
    form.keyServer = askUnlessGiven(form.keyServer, "--key-server", "Address (URL) of the key server");
    const EnrollParameters parameters = client.enrollParameters(form.address, form.keyServer, form.locale);
    if (parameters.samlUser) {
        Output::note(form.address + " signs on at its own organisation (single sign-on)");
    }
    form.enrollId = askUnlessGiven(form.enrollId, "--enroll-id", "Enrollment id (\"tarn status\" tells it)");
    form.sender = askUnlessGiven(form.sender, "--sender", "Address of the message's sender");
    form.firstName = askUnlessGiven(form.firstName, "--first-name", "First name");
    form.lastName = askUnlessGiven(form.lastName, "--last-name", "Last name");
    form.password = readSecret({options.passwordFile, "--password-file", "TARN_PASSWORD", "New password", true});
    form.passPhrase = readSecret({options.passPhraseFile, "--pass-phrase-file", "TARN_PASS_PHRASE",
                                  "Personal pass phrase (empty for none)", false, true});
    if (!form.simple) {
        fillInQuestions(form, options, parameters);
    }
    return runStages(client, form);
}

void enroll(Context& context, const EnrollOptions& options)
{
    const auto result = fillInAndSend(context.client, options);
    nlohmann::json answers = nlohmann::json::object();
    std::string text = printable(options.form.address) + " is enrolled.\n";
    for (const auto& [key, value] : result) {
        answers[key] = value;
        text.append(printable(key)).append(": ").append(printable(value)).append("\n");
    }
    context.output.result(text, {{"address", options.form.address}, {"result", answers}});
}

} // namespace

void addEnrollCommand(Parser& program, Context& context)
{
    auto [parser, options] =
        addCommand(program, context, "enroll", "Enroll a new recipient; asks for what no option gives", enroll);
    auto& form = options.form;
    form.timeZone = localTimeZone();
    parser.argument("ADDRESS", form.address, "The address to enroll");
    parser.text("--key-server", "URL", form.keyServer, "Address of the key server");
    parser.text("--enroll-id", "ID", form.enrollId, "The enrollment id that \"tarn status\" tells");
    parser.text("--sender", "ADDRESS", form.sender, "Sender of the waiting message");
    parser.text("--first-name", "NAME", form.firstName, "First name");
    parser.text("--last-name", "NAME", form.lastName, "Last name");
    parser.text("--locale", "LOCALE", form.locale, "Such as de");
    parser.number("--time-zone", "MINUTES", form.timeZone, -720, 840, "Minutes east of UTC (default: as here and now)");
    parser.text("--time-format", "TEXT", form.timeFormat, "Noted in the operation log only");
    parser.flag("--simple", form.simple, "A registration without security questions");
    parser.texts("--question", "TEXT", options.questions, "A security question or its id");
    parser.passwordFile(options.passwordFile);
    parser.text("--pass-phrase-file", "FILE", options.passPhraseFile,
                "File whose first line is the pass phrase; without it TARN_PASS_PHRASE, a hidden prompt or none");
    parser.text("--answers-file", "FILE", options.answersFile,
                "File with one answer per line; without it TARN_ANSWER_1 to _3 or hidden prompts");
}

} // namespace tarn
