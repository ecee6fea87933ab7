#include "Accounts.h"
#include "Configuration.h"
#include "Handlers.h"
#include "Messages.h"
#include "Texts.h"
#include "TrackingRecords.h"

namespace standin {

namespace {

std::vector<std::string> readRecords(Statement& rows)
{
    const auto fields = trackingFields();
    std::vector<std::string> records;
    while (rows.executeStep()) {
        std::string map;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            appendSized(map, fields[i].name);
            appendSized(map, rows.getColumn(static_cast<int>(i)).getString());
        }
        appendParameter(records.emplace_back(), tag("da"), map);
    }
    return records;
}

std::string selectRecords(const std::string& condition)
{
    std::string sql = "SELECT ";
    for (const auto& field : trackingFields()) {
        sql += (&field == trackingFields().data() ? "" : ", ") + std::string(field.expression);
    }
    return sql + trackingTables + "WHERE " + condition;
}

Reply recordsReply(const Request& request, const std::string& id, std::int64_t start, std::int64_t total,
                   const std::vector<std::string>& records)
{
    return Reply(request.code(), Status::Ok, std::to_string(records.size()) + " tracking records")
        .text(tag("id"), id)
        .number(tag("si"), static_cast<std::int32_t>(start))
        .number(tag("mx"), static_cast<std::int32_t>(total))
        .items(tag("ri"), records);
}

Reply informationOfMessage(const Request& request, Database& database)
{
    const auto message = Messages(database).ofEnvelope(request.text(tag("en")));
    Accounts accounts(database);
    const auto verdict = authenticateOwner(request, accounts, message.sender);
    if (verdict.status != Status::Ok) {
        return {request.code(), verdict};
    }
    auto rows = query(database, selectRecords("m.id = ? ORDER BY r.serial"), message.id);
    const auto records = readRecords(rows);
    return recordsReply(request, message.id, 0, static_cast<std::int64_t>(records.size()), records);
}

Reply informationOfSender(const Request& request, Database& database)
{
    const auto sender = normalAddress(request.text(tag("fm")));
    demand(!sender.empty(), Status::Missing, "neither an envelope nor a user name came");
    const auto& sortName = request.text(tag("sf"));
    const auto& sortField = trackingField(sortName.empty() ? "createDate" : sortName);
    Accounts accounts(database);
    const auto verdict = authenticateOwner(request, accounts, sender);
    if (verdict.status != Status::Ok) {
        return {request.code(), verdict};
    }

    auto counted = query(database, "SELECT count(*)" + trackingTables + "WHERE m.sender = ?", sender);
    counted.executeStep();
    // Start and size of the page are unsigned numbers on the caller's side.
    const std::int64_t start = static_cast<std::uint32_t>(request.number(tag("si")));
    const std::int64_t size = static_cast<std::uint32_t>(request.number(tag("mx")));
    const std::string order = std::string(sortField.expression) + (sortField.isText ? " COLLATE NOCASE" : "") +
                              (request.flag(tag("as")) ? " ASC" : " DESC");
    auto rows = query(database, selectRecords("m.sender = ? ORDER BY " + order + ", r.serial LIMIT ? OFFSET ?"), sender,
                      size, start);
    return recordsReply(request, "", start, counted.getColumn(0), readRecords(rows));
}

} // namespace

Reply messageInformation(const Request& request, Context& context)
{
    namedConfiguration(request, context);
    return request.has(tag("en")) ? informationOfMessage(request, context.database)
                                  : informationOfSender(request, context.database);
}

} // namespace standin
