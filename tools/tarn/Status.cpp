#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Text.h"
#include <TarnRemoteClient.h>

namespace tarn {

namespace {

struct StatusOptions
{
    std::string envelope;
    std::vector<std::string> recipients;
    std::string config;
};

nlohmann::json sensitivityOf(int value)
{
    return value == -1 ? nlohmann::json() : nlohmann::json(value);
}

void recipients(Context& context, const StatusOptions& options)
{
    const EnvelopeRecipients found = context.client.recipients(readTextFile(options.envelope));
    std::string text;
    for (const auto& address : found.addresses) {
        text += printable(address) + "\n";
    }
    context.output.result(text, {{"recipients", found.addresses}, {"sensitivity", sensitivityOf(found.sensitivity)}});
}

// With another status the library asks for no further recipients.
bool isOfARecipient(std::int32_t status)
{
    return status >= TARN_STATUS_PASSWORD_NEEDED && status <= TARN_STATUS_NO_ENVELOPE && !statusName(status).empty();
}

std::string meaning(std::int32_t status, const std::string& text)
{
    const std::string known = isOfARecipient(status) ? statusName(status) : "the daemon cannot tell";
    return text.empty() ? known : known + ": " + text;
}

// The recipients' statuses are the result that was asked for, not a failure of the question.
void status(Context& context, const StatusOptions& options)
{
    const PayloadStatus found = context.client.payloadStatus(
        readTextFile(options.envelope), absolutePath(options.config), addresses(options.recipients));

    Table table({"RECIPIENT", "STATUS", "MEANING"});
    nlohmann::json entries = nlohmann::json::array();
    for (const auto& [recipient, status, text] : found.recipients) {
        table.add({recipient, std::to_string(status), meaning(status, text)});
        entries.push_back({{"recipient", recipient}, {"status", status}, {"text", text}});
    }
    std::string text = table.text();
    nlohmann::json object{{"recipients", entries}, {"sensitivity", sensitivityOf(found.sensitivity)}};
    if (!found.enrollId.empty()) {
        text += "Enrollment id " + printable(found.enrollId) + ", sender " + printable(found.from) + "\n";
        object["enrollId"] = found.enrollId;
        object["sender"] = found.from;
    }
    if (isOfARecipient(found.lastStatus)) {
        context.output.result(text, object);
        return;
    }
    if (!context.output.asJson) {
        Output::lines(text);
    }
    object.update({{"status", found.lastStatus}, {"message", ""}});
    throw Failure(Exit::refused,
                  statusText(found.lastStatus) + " is none that a recipient can be in; no further " +
                      "recipients were asked for",
                  object);
}

} // namespace

void addStatusCommands(CLI::App& app, Context& context)
{
    const auto recipientsOptions = std::make_shared<StatusOptions>();
    auto* recipientsCommand = app.add_subcommand("recipients", "List the recipients of an envelope");
    recipientsCommand
        ->add_option("ENVELOPE", recipientsOptions->envelope, "File with the envelope; - is standard input")
        ->required();
    onRun(recipientsCommand, context, recipientsOptions, recipients);

    const auto statusOptions = std::make_shared<StatusOptions>();
    auto* statusCommand = app.add_subcommand("status", "Tell what an envelope's recipients have to expect");
    statusCommand->add_option("ENVELOPE", statusOptions->envelope, "File with the envelope; - is standard input")
        ->required();
    statusCommand->add_option("--recipient", statusOptions->recipients, "A recipient's address; may be repeated")
        ->allow_extra_args(false)
        ->required();
    addConfigOption(statusCommand, statusOptions->config);
    onRun(statusCommand, context, statusOptions, status);
}

} // namespace tarn
