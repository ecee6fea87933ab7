#include "Store.h"

#include "Accounts.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace standin {

namespace {

constexpr int busyTimeoutMillis = 1000;
constexpr std::int64_t applicationId = 0x5441524E; // "TARN"
constexpr std::int64_t schemaVersion = 2;

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

// Makes the file, so that nobody else can read it. SQLite would take a device or a pipe for a file.
void prepareFile(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR);
    struct stat info = {};
    if (file < 0 || fstat(file, &info) != 0) {
        throw StoreError(std::strerror(errno));
    }
    close(file);
    if (!S_ISREG(info.st_mode)) {
        throw StoreError("not a regular file");
    }
}

std::int64_t pragma(Database& database, const std::string& name)
{
    return database.execAndGet("PRAGMA " + name).getInt64();
}

void demandSoundness(Database& database)
{
    const auto answer = database.execAndGet("PRAGMA quick_check(1)").getString();
    if (answer != "ok") {
        throw StoreError("damaged: " + answer);
    }
}

void makeTables(Database& database)
{
    for (const char* table : tables) {
        execute(database, table);
    }
    execute(database, "PRAGMA application_id = " + std::to_string(applicationId));
    execute(database, "PRAGMA user_version = " + std::to_string(schemaVersion));
}

} // namespace

Database openStore(const std::string& path)
{
    if (!path.empty()) {
        prepareFile(path);
    }
    Database database(path.empty() ? ":memory:" : path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE,
                      busyTimeoutMillis);
    demandSoundness(database);
    database.exec("PRAGMA synchronous = NORMAL");
    database.exec("PRAGMA foreign_keys = ON");
    Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    if (query(database, "SELECT 1 FROM sqlite_master LIMIT 1").executeStep()) {
        if (pragma(database, "application_id") != applicationId) {
            throw StoreError("a database of another program");
        }
        if (pragma(database, "user_version") != schemaVersion) {
            throw StoreError("a store of another version of tarn-standin");
        }
    } else {
        makeTables(database);
        Accounts(database).addReadyMade();
    }
    transaction.commit();
    return database;
}

} // namespace standin
