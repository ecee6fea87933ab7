#include "Command.h"
#include "Failure.h"
#include "Host.h"
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
        throw Failure(Exit::usage, "\"" + question + "\" is none of the security questions to choose from");
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
    const auto answers = options.answersFile.empty() ? std::vector<std::string>() : readLines(options.answersFile);
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
        form.answers[i] = index < answers.size() ? answers[index]
                                                 : secret({"", "--answers-file", "TARN_ANSWER_" + std::to_string(i + 1),
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
std::vector<KeyValue> runStages(Context& context, Enrollment form)
{
    constexpr int confirmation = 1;
    form.stage = 0;
    auto result = context.client.enroll(form);
    if (stageIn(result) != confirmation) {
        return result;
    }
    form.stage = confirmation;
    return context.client.enroll(form);
}

void enroll(Context& context, const EnrollOptions& options)
{
    Enrollment form = options.form;
    form.keyServer = askUnlessGiven(form.keyServer, "--key-server", "Address (URL) of the key server");
    const EnrollParameters parameters = context.client.enrollParameters(form.address, form.keyServer, form.locale);
    if (parameters.samlUser) {
        Output::note(form.address + " signs on at its own organisation (single sign-on)");
    }
    form.enrollId = askUnlessGiven(form.enrollId, "--enroll-id", "Enrollment id (\"tarn status\" tells it)");
    form.sender = askUnlessGiven(form.sender, "--sender", "Address of the message's sender");
    form.firstName = askUnlessGiven(form.firstName, "--first-name", "First name");
    form.lastName = askUnlessGiven(form.lastName, "--last-name", "Last name");
    form.password = secret({options.passwordFile, "--password-file", "TARN_PASSWORD", "New password", true});
    form.passPhrase = secret({options.passPhraseFile, "--pass-phrase-file", "TARN_PASS_PHRASE",
                              "Personal pass phrase (empty for none)", false, true});
    if (!form.simple) {
        fillInQuestions(form, options, parameters);
    }
    const auto result = runStages(context, form);

    nlohmann::json answers = nlohmann::json::object();
    std::string text = printable(form.address) + " is enrolled.\n";
    for (const auto& [key, value] : result) {
        answers[key] = value;
        text += printable(key + ": " + value) + "\n";
    }
    context.output.result(text, {{"address", form.address}, {"result", answers}});
}

} // namespace

void addEnrollCommand(CLI::App& app, Context& context)
{
    const auto options = std::make_shared<EnrollOptions>();
    auto& form = options->form;
    form.timeZone = localTimeZone();
    auto* command = app.add_subcommand("enroll", "Enroll a new recipient; asks for what no option gives");
    command->add_option("ADDRESS", form.address, "The address to enroll")->required();
    command->add_option("--key-server", form.keyServer, "Address (URL) of the key server");
    command->add_option("--enroll-id", form.enrollId, "The enrollment id that \"tarn status\" tells");
    command->add_option("--sender", form.sender, "Address of the sender of the waiting message");
    command->add_option("--first-name", form.firstName);
    command->add_option("--last-name", form.lastName);
    command->add_option("--locale", form.locale, "Such as de");
    command->add_option("--time-zone", form.timeZone, "Minutes east of UTC")
        ->capture_default_str()
        ->check(CLI::Range(-720, 840));
    command->add_option("--time-format", form.timeFormat, "Noted in the operation log only");
    command->add_flag("--simple", form.simple, "A registration without security questions");
    command->add_option("--question", options->questions, "A security question or its id; may be repeated")
        ->allow_extra_args(false)
        ->expected(1, mostQuestions);
    addPasswordOption(command, options->passwordFile);
    command->add_option(
        "--pass-phrase-file", options->passPhraseFile,
        "File whose first line is the pass phrase; without it TARN_PASS_PHRASE, a hidden prompt or none");
    command->add_option("--answers-file", options->answersFile,
                        "File with an answer a line; without it TARN_ANSWER_1 to _3 or hidden prompts");
    onRun(command, context, options, enroll);
}

} // namespace tarn
