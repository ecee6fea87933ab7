#include "Database.h"

#include "Schema.h"

#include <cerrno>
#include <cstring>
#include <sqlite3.h>
#include <sys/stat.h>

namespace standin {

namespace {

constexpr int busyTimeoutMillis = 1000;

// SQLite would read a device or a pipe as if it were a file.
void demandRegularFile(const std::string& path)
{
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0) {
        if (errno == ENOENT)
            return;
        throw StoreError(std::strerror(errno));
    }
    if (!S_ISREG(info.st_mode))
        throw StoreError("not a regular file");
}

std::string describe(sqlite3* database, int result)
{
    std::string text = sqlite3_errstr(result & 0xFF);
    const char* detail = sqlite3_errmsg(database);
    if (detail && text != detail)
        text += std::string(" (") + detail + ")";
    return text;
}

} // namespace

void Statement::Finalize::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

void Database::Close::operator()(sqlite3* database) const
{
    sqlite3_close(database);
}

Statement::Statement(sqlite3* database, const std::string& sql)
{
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(database, sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr);
    statement_.reset(statement);
    if (result != SQLITE_OK)
        throw StoreError(describe(database, result));
}

void Statement::check(int result) const
{
    if (result != SQLITE_OK)
        throw StoreError(describe(sqlite3_db_handle(statement_.get()), result));
}

void Statement::reset()
{
    sqlite3_reset(statement_.get());
}

void Statement::bindOne(int index, std::int64_t value)
{
    check(sqlite3_bind_int64(statement_.get(), index, value));
}

void Statement::bindOne(int index, std::string_view value)
{
    check(sqlite3_bind_text64(statement_.get(), index, value.data() ? value.data() : "", value.size(), SQLITE_TRANSIENT,
                              SQLITE_UTF8));
}

void Statement::bindOne(int index, Blob value)
{
    check(sqlite3_bind_blob64(statement_.get(), index, value.bytes.data() ? value.bytes.data() : "", value.bytes.size(),
                              SQLITE_STATIC));
}

Statement& Statement::bindAll(const std::vector<std::string>& texts)
{
    reset();
    int index = 0;
    for (const auto& text : texts)
        bindOne(++index, text);
    return *this;
}

bool Statement::step()
{
    const int result = sqlite3_step(statement_.get());
    if (result == SQLITE_ROW)
        return true;
    if (result != SQLITE_DONE)
        check(result);
    return false;
}

std::int64_t Statement::number(int column) const
{
    return sqlite3_column_int64(statement_.get(), column);
}

std::string_view Statement::view(int column) const
{
    const auto* bytes = sqlite3_column_blob(statement_.get(), column);
    const auto size = sqlite3_column_bytes(statement_.get(), column);
    return {static_cast<const char*>(bytes), bytes ? static_cast<std::size_t>(size) : 0};
}

Database::Database(const std::string& path)
{
    if (!path.empty())
        demandRegularFile(path);
    sqlite3* database = nullptr;
    const int result = sqlite3_open(path.empty() ? ":memory:" : path.c_str(), &database);
    database_.reset(database);
    if (result != SQLITE_OK)
        throw StoreError(database ? describe(database, result) : sqlite3_errstr(result));
    sqlite3_extended_result_codes(database, 1);
    sqlite3_busy_timeout(database, busyTimeoutMillis);
    checkIntegrity();
    prepareSchema();
}

void Database::checkIntegrity()
{
    auto checked = query("PRAGMA quick_check(1)");
    if (!checked.step() || checked.view(0) != "ok")
        throw StoreError("damaged: " + checked.text(0));
}

void Database::prepareSchema()
{
    execute("PRAGMA synchronous = NORMAL");
    execute("PRAGMA foreign_keys = ON");
    Transaction transaction(*this);
    makeSchema(*this);
    transaction.commit();
}

std::int64_t Database::changes() const
{
    return sqlite3_changes64(database_.get());
}

Transaction::Transaction(Database& database) : database_(database)
{
    database_.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    if (!open_)
        return;
    try {
        database_.execute("ROLLBACK");
    } catch (const StoreError&) {
        // A store that fails hard has ended the transaction itself.
    }
}

void Transaction::commit()
{
    database_.execute("COMMIT");
    open_ = false;
}

} // namespace standin
