#include "Schema.h"

#include "Accounts.h"
#include "Database.h"
#include "Password.h"

#include <array>

namespace standin {

namespace {

constexpr std::int64_t applicationId = 0x5441524E; // "TARN"
constexpr std::int64_t schemaVersion = 1;

// Dates are milliseconds since 1970 UTC, 0 for never.
constexpr std::array tables = {
    "CREATE TABLE accounts (address TEXT PRIMARY KEY, name TEXT NOT NULL, locale TEXT NOT NULL,"
    " password TEXT NOT NULL, state INTEGER NOT NULL, failures INTEGER NOT NULL DEFAULT 0,"
    " blockedUntil INTEGER NOT NULL DEFAULT 0)",
    "CREATE TABLE answers (address TEXT NOT NULL REFERENCES accounts, question TEXT NOT NULL, answer TEXT NOT NULL,"
    " PRIMARY KEY (address, question))",
    "CREATE TABLE enrollments (id TEXT PRIMARY KEY, address TEXT NOT NULL UNIQUE)",
    "CREATE TABLE sessions (token TEXT PRIMARY KEY, address TEXT NOT NULL, expires INTEGER NOT NULL)",
    "CREATE TABLE messages (id TEXT PRIMARY KEY, sender TEXT NOT NULL, subject TEXT NOT NULL, created INTEGER NOT NULL,"
    " size INTEGER NOT NULL, sensitivity INTEGER NOT NULL, attachments INTEGER NOT NULL, recipients INTEGER NOT NULL,"
    " configuration BLOB NOT NULL, mime BLOB NOT NULL)",
    "CREATE INDEX messagesOfSender ON messages (sender)",
    "CREATE TABLE recipients (serial INTEGER PRIMARY KEY, message TEXT NOT NULL REFERENCES messages,"
    " address TEXT NOT NULL, type TEXT NOT NULL, locked INTEGER NOT NULL DEFAULT 0,"
    " statusMessage TEXT NOT NULL DEFAULT '', expires INTEGER NOT NULL DEFAULT 0, tries INTEGER NOT NULL DEFAULT 0,"
    " firstOpened INTEGER NOT NULL DEFAULT 0, lastOpened INTEGER NOT NULL DEFAULT 0,"
    " lastFailed INTEGER NOT NULL DEFAULT 0, modified INTEGER NOT NULL, UNIQUE (message, address))",
    "CREATE INDEX recipientsByAddress ON recipients (address)",
    "CREATE TABLE sessionKeys (key TEXT PRIMARY KEY, message TEXT NOT NULL REFERENCES messages,"
    " address TEXT NOT NULL, expires INTEGER NOT NULL)",
};

struct ReadyMade
{
    const char* address;
    const char* name;
    const char* locale;
    const char* password;
    AccountState state;
};

constexpr std::array readyMade = {
    ReadyMade{"alice@example.com", "Alice", "en", "wonderland", AccountState::Active},
    ReadyMade{"bob@example.com", "Bob", "de", "builder", AccountState::Active},
    ReadyMade{"carol@example.com", "Carol", "fr", "caravan", AccountState::Active},
    ReadyMade{"dave@example.com", "Dave", "en", "doorstop", AccountState::Disabled},
};

std::int64_t pragma(Database& database, const std::string& name)
{
    auto statement = database.query("PRAGMA " + name);
    return statement.step() ? statement.number(0) : 0;
}

} // namespace

void makeSchema(Database& database)
{
    auto anyTable = database.query("SELECT 1 FROM sqlite_master LIMIT 1");
    if (anyTable.step()) {
        if (pragma(database, "application_id") != applicationId)
            throw StoreError("a database of another program");
        if (pragma(database, "user_version") != schemaVersion)
            throw StoreError("a store of another version of tarn-standin");
        return;
    }
    for (const char* table : tables)
        database.execute(table);
    for (const auto& account : readyMade)
        database.execute("INSERT INTO accounts (address, name, locale, password, state) VALUES (?, ?, ?, ?, ?)",
                         std::string_view(account.address), std::string_view(account.name),
                         std::string_view(account.locale), hashPassword(account.password),
                         static_cast<std::int64_t>(account.state));
    database.execute("PRAGMA application_id = " + std::to_string(applicationId));
    database.execute("PRAGMA user_version = " + std::to_string(schemaVersion));
}

} // namespace standin
