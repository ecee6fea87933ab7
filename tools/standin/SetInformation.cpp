#include "Accounts.h"
#include "Configuration.h"
#include "Handlers.h"
#include "Messages.h"
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

Statement prepare(Database& database, const std::string& sql, const std::vector<std::string>& values)
{
    Statement statement(database, sql);
    int index = 0;
    for (const auto& value : values) {
        statement.bind(++index, value);
    }
    return statement;
}

Selection selectionOf(const StringMap& wanted)
{
    demand(!wanted.empty(), Status::Missing, "no field says which records to change");
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

int change(const Request& request, Database& database, const Selection& selection)
{
    std::string sql = "UPDATE recipients SET modified = ?";
    std::vector<std::string> values = {std::to_string(nowMillis())};
    const auto set = [&](std::string_view column, std::string value) {
        sql += ", " + std::string(column) + " = ?";
        values.push_back(std::move(value));
    };
    if (request.has(tag("ls"))) {
        set("locked", request.flag(tag("ls")) ? "1" : "0");
    }
    if (request.has(tag("sm"))) {
        set("statusMessage", request.text(tag("sm")));
    }
    if (request.has(tag("ed"))) {
        set("expires", std::to_string(request.longNumber(tag("ed"))));
    }
    sql += " WHERE serial IN (SELECT r.serial" + trackingTables + "WHERE " + selection.condition + ")";
    values.insert(values.end(), selection.values.begin(), selection.values.end());
    return prepare(database, sql, values).exec();
}

Reply changed(const Request& request, Database& database, const Selection& selection)
{
    const auto count = change(request, database, selection);
    demand(count != 0, Status::NothingMatched, "no tracking record matches");
    return Reply(request.code(), Status::Ok,
                 std::to_string(count) + (count == 1 ? " record changed" : " records changed"));
}

Reply setForRecipient(const Request& request, Database& database)
{
    const auto recipient = normalAddress(request.text(tag("to")));
    demand(!recipient.empty(), Status::Missing, "no recipient came");
    const auto message = Messages(database).ofEnvelope(request.text(tag("en")));
    Accounts accounts(database);
    const auto verdict = authenticateOwner(request, accounts, message.sender);
    if (verdict.status != Status::Ok) {
        return {request.code(), verdict};
    }
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
    auto rows = prepare(database, "SELECT DISTINCT m.sender" + trackingTables + "WHERE " + selection.condition,
                        selection.values);
    while (rows.executeStep()) {
        senders.push_back(rows.getColumn(0));
    }
    demand(!senders.empty(), Status::NothingMatched, "no tracking record matches");

    Accounts accounts(database);
    std::string owner = senders.front();
    if (senders.size() == 1) {
        const auto verdict = authenticateOwner(request, accounts, owner);
        if (verdict.status != Status::Ok) {
            return {request.code(), verdict};
        }
    } else if (request.text(tag("ky")).empty()) {
        return {request.code(), Status::PasswordNeeded, "the password of the sender is needed"};
    } else {
        const auto owners = accounts.owners(senders, request.text(tag("ky")));
        if (owners.empty()) {
            return {request.code(), Status::WrongPassword, "the password is that of no sender of these messages"};
        }
        demand(owners.size() <= 1, Status::BadValue, "the records are of several senders: add the field \"from\"");
        owner = owners.front();
    }
    selection.add("m.sender", owner);
    return changed(request, database, selection);
}

} // namespace

Reply setInformation(const Request& request, Context& context)
{
    namedConfiguration(request, context);
    demand(request.longNumber(tag("ed")) >= 0, Status::BadValue, "the expiry date lies before 1970");
    return request.has(tag("ri")) ? setForSelection(request, context.database)
                                  : setForRecipient(request, context.database);
}

} // namespace standin
