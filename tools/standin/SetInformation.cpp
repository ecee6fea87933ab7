#include "Configuration.h"
#include "Handlers.h"
#include "Texts.h"
#include "TrackingRecords.h"

namespace standin {

namespace {

// The records to change, as a condition of SQL and the values of its placeholders.
struct Selection
{
    std::string condition;
    std::vector<std::string> values;

    void add(std::string_view expression, std::string value)
    {
        condition += (condition.empty() ? "" : " AND ") + std::string(expression) + " = ?";
        values.push_back(std::move(value));
    }
};

Selection selectionOf(const StringMap& wanted)
{
    if (wanted.empty())
        throw Refusal{Status::Missing, "no field says which records to change"};
    Selection selection;
    for (const auto& [name, value] : wanted) {
        const auto& field = trackingField(name);
        const bool address = name == "to" || name == "recipient" || name == "from";
        const std::string expression(field.expression);
        selection.add(field.isText ? expression : "CAST(" + expression + " AS TEXT)",
                      address ? normalAddress(value) : value);
    }
    return selection;
}

std::int64_t change(const Request& request, Database& database, const Selection& selection)
{
    std::string sql = "UPDATE recipients SET modified = ?";
    std::vector<std::string> values = {std::to_string(nowMillis())};
    const auto set = [&](std::string_view column, std::string value) {
        sql += ", " + std::string(column) + " = ?";
        values.push_back(std::move(value));
    };
    if (request.has(tag("ls")))
        set("locked", request.flag(tag("ls")) ? "1" : "0");
    if (request.has(tag("sm")))
        set("statusMessage", request.text(tag("sm")));
    if (request.has(tag("ed")))
        set("expires", std::to_string(request.longNumber(tag("ed"))));
    sql += " WHERE serial IN (SELECT r.serial" + std::string(trackingTables) + "WHERE " + selection.condition + ")";
    values.insert(values.end(), selection.values.begin(), selection.values.end());
    database.prepare(sql).bindAll(values).step();
    return database.changes();
}

Reply changed(const Request& request, Database& database, const Selection& selection)
{
    const auto count = change(request, database, selection);
    if (count == 0)
        throw Refusal{Status::NothingMatched, "no tracking record matches"};
    return Reply(request.code(), Status::Ok,
                 std::to_string(count) + (count == 1 ? " record changed" : " records changed"));
}

Reply setForRecipient(const Request& request, Database& database)
{
    const auto recipient = normalAddress(request.text(tag("to")));
    if (recipient.empty())
        throw Refusal{Status::Missing, "no recipient came"};
    const auto message = trackedMessage(request, database);
    Accounts accounts(database);
    const auto verdict = authenticateOwner(request, accounts, message.sender);
    if (verdict.status != Status::Ok)
        return trackingRefusal(request, verdict);
    Selection selection;
    selection.add("m.id", message.id);
    selection.add("r.address", recipient);
    return changed(request, database, selection);
}

// No user name comes with the map: the password says whose records are meant.
Reply setForSelection(const Request& request, Database& database)
{
    auto selection = selectionOf(request.map(tag("ri")));
    std::vector<std::string> senders;
    auto rows =
        database.prepare("SELECT DISTINCT m.sender" + std::string(trackingTables) + "WHERE " + selection.condition);
    rows.bindAll(selection.values);
    while (rows.step())
        senders.push_back(rows.text(0));
    if (senders.empty())
        throw Refusal{Status::NothingMatched, "no tracking record matches"};

    Accounts accounts(database);
    std::string owner = senders.front();
    if (senders.size() == 1) {
        const auto verdict = authenticateOwner(request, accounts, owner);
        if (verdict.status != Status::Ok)
            return trackingRefusal(request, verdict);
    } else if (request.text(tag("ky")).empty()) {
        return trackingRefusal(request, {Status::PasswordNeeded, "the password of the sender is needed"});
    } else {
        const auto owners = accounts.owners(senders, request.text(tag("ky")));
        if (owners.empty())
            return trackingRefusal(request,
                                   {Status::WrongPassword, "the password is that of no sender of these messages"});
        if (owners.size() > 1)
            throw Refusal{Status::BadValue, "the records are of several senders: add the field \"from\""};
        owner = owners.front();
    }
    selection.add("m.sender", owner);
    return changed(request, database, selection);
}

} // namespace

Reply setInformation(const Request& request, Context& context)
{
    namedConfiguration(request.text(tag("ep")));
    if (request.longNumber(tag("ed")) < 0)
        throw Refusal{Status::BadValue, "the expiry date lies before 1970"};
    return request.has(tag("ri")) ? setForSelection(request, context.database)
                                  : setForRecipient(request, context.database);
}

} // namespace standin
