#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Text.h"
#include <TarnRemoteClient.h>

namespace tarn {

namespace {

struct StatusOptions : ConfigOptions
{
    std::string envelope;
    std::vector<std::string> recipients;
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
    const PayloadStatus found =
        context.client.payloadStatus(readTextFile(options.envelope), options.configFile(), options.recipients);

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
                  statusText(found.lastStatus) + " is not one that a recipient can have; no further " +
                      "recipients were asked for",
                  object);
}

} // namespace

void addStatusCommands(Parser& program, Context& context)
{
    auto [recipientsParser, recipientsOptions] =
        addCommand(program, context, "recipients", "List the recipients of an envelope", recipients);
    recipientsParser.envelope(recipientsOptions.envelope);

    auto [parser, options] =
        addCommand(program, context, "status", "Tell what recipients of an envelope can expect", status);
    parser.envelope(options.envelope);
    parser.addresses("--recipient", options.recipients, "A recipient", Needed::yes);
    parser.config(options);
}

} // namespace tarn
