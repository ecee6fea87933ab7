#include "Command.h"
#include "Files.h"
#include "Text.h"
#include "Time.h"
#include "TrackingView.h"
#include <limits>

namespace tarn {

namespace {

struct TrackingOptions : AccessOptions
{
    std::string envelope;
};

struct SentOptions : AccessOptions
{
    SentQuery query{.max = 20, .sortBy = "createDate"};
};

void tracking(Context& context, const TrackingOptions& options)
{
    const Tracking found = context.client.tracking(readTextFile(options.envelope), options.access(""));
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
    const SentPage page = context.client.sent(query, options.access(query.user));
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

void addTrackingCommands(Parser& program, Context& context)
{
    auto [trackingParser, trackingOptions] =
        addCommand(program, context, "tracking", "Show lock and expiry of each recipient of an envelope", tracking);
    trackingParser.envelope(trackingOptions.envelope);
    trackingParser.access(trackingOptions);

    auto [parser, options] =
        addCommand(program, context, "sent", "List a user's sent messages, recipient by recipient", sent);
    constexpr auto most = std::numeric_limits<std::uint32_t>::max();
    auto& query = options.query;
    parser.argument("USER", query.user, "The sender's address");
    parser.text("--sort", "FIELD", query.sortBy, "Field to sort by, such as to, subject, expiryDate, numTries");
    parser.flag("--ascending", query.ascending, "Smallest or oldest first");
    parser.number("--start", "COUNT", query.start, 0u, most, "Records to leave out at the beginning (default: 0)");
    parser.number("--max", "COUNT", query.max, 0u, most, "Records to show at most (default: 20)");
    parser.access(options);
}

} // namespace tarn
