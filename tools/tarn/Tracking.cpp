#include "Command.h"
#include "Files.h"
#include "Secrets.h"
#include "Text.h"
#include "Time.h"
#include "TrackingView.h"

namespace tarn {

namespace {

struct TrackingOptions
{
    std::string envelope;
    std::string config;
    std::string passwordFile;
};

struct SentOptions
{
    SentQuery query;
    std::string config;
    std::string passwordFile;
};

void tracking(Context& context, const TrackingOptions& options)
{
    const std::string envelope = readTextFile(options.envelope);
    const Tracking found =
        context.client.tracking(envelope, {password(options.passwordFile, ""), absolutePath(options.config)});
    context.output.result("Message " + printable(found.messageId) + "\n" + stateTable(found.recipients),
                          {{"messageId", found.messageId}, {"recipients", stateObjects(found.recipients)}});
}

nlohmann::json recordObject(const SentRecord& record)
{
    nlohmann::json object = stateObject(record.state);
    object.update({{"messageId", record.messageId},
                   {"subject", record.subject},
                   {"createDate", record.created},
                   {"created", isoTime(record.created)},
                   {"firstOpenDate", record.firstOpened},
                   {"firstOpened", isoTime(record.firstOpened)},
                   {"lastModifiedDate", record.lastModified},
                   {"lastModified", isoTime(record.lastModified)},
                   {"numTries", record.tries},
                   {"flags", record.flags}});
    return object;
}

std::string rangeText(const SentQuery& query, const SentPage& page)
{
    const std::string total = std::to_string(page.total);
    if (page.records.empty()) {
        return "no records from " + std::to_string(query.start + 1ull) + " on, of " + total + "\n";
    }
    return "records " + std::to_string(query.start + 1ull) + " to " +
           std::to_string(query.start + page.records.size()) + " of " + total + "\n";
}

void sent(Context& context, const SentOptions& options)
{
    const auto& query = options.query;
    const SentPage page =
        context.client.sent(query, {password(options.passwordFile, query.user), absolutePath(options.config)});
    Table table({"SENT", "RECIPIENT", "SUBJECT", "STATE", "TRIES", "FIRST OPENED", "CHANGED", "EXPIRES", "MESSAGE",
                 "MESSAGE ID"});
    nlohmann::json records = nlohmann::json::array();
    for (const auto& record : page.records) {
        table.add({localTime(record.created), record.state.recipient, record.subject, stateName(record.state),
                   std::to_string(record.tries), localTime(record.firstOpened), localTime(record.lastModified),
                   localTime(record.state.expiry), record.state.message, record.messageId});
        records.push_back(recordObject(record));
    }
    context.output.result(
        (page.records.empty() ? "" : table.text()) + rangeText(query, page),
        {{"start", query.start}, {"count", page.records.size()}, {"total", page.total}, {"records", records}});
}

} // namespace

void addTrackingCommands(CLI::App& app, Context& context)
{
    const auto trackingOptions = std::make_shared<TrackingOptions>();
    auto* trackingCommand = app.add_subcommand("tracking", "Show lock and expiry of each recipient of an envelope");
    trackingCommand->add_option("ENVELOPE", trackingOptions->envelope, "File with the envelope; - is standard input")
        ->required();
    addPasswordOption(trackingCommand, trackingOptions->passwordFile);
    addConfigOption(trackingCommand, trackingOptions->config);
    onRun(trackingCommand, context, trackingOptions, tracking);

    const auto sentOptions = std::make_shared<SentOptions>();
    auto& query = sentOptions->query;
    query.max = 20;
    query.sortBy = "createDate";
    auto* sentCommand = app.add_subcommand("sent", "List a user's sent messages, recipient by recipient");
    sentCommand->add_option("USER", query.user, "The sender's address")->required();
    sentCommand->add_option("--sort", query.sortBy, "Field to sort by, such as to, subject, expiryDate, numTries")
        ->capture_default_str();
    sentCommand->add_flag("--ascending", query.ascending, "Smallest or oldest first");
    sentCommand->add_option("--start", query.start, "Records to leave out at the beginning")->capture_default_str();
    sentCommand->add_option("--max", query.max, "Records to show at most")->capture_default_str();
    addPasswordOption(sentCommand, sentOptions->passwordFile);
    addConfigOption(sentCommand, sentOptions->config);
    onRun(sentCommand, context, sentOptions, sent);
}

} // namespace tarn
