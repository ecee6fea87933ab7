#pragma once

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>
#include <optional>
#include <string>

namespace standin {

using SQLite::Database;
using SQLite::Statement;
using SQLite::Transaction;
// The store cannot be read or written: unreadable, damaged, locked, or its disk is full.
using StoreError = SQLite::Exception;

// The statement with its values bound, not yet stepped.
template <class... Values>
Statement query(Database& database, const std::string& sql, const Values&... values)
{
    Statement statement(database, sql);
    SQLite::bind(statement, values...);
    return statement;
}

// Returns how many rows were changed.
template <class... Values>
int execute(Database& database, const std::string& sql, const Values&... values)
{
    return query(database, sql, values...).exec();
}

// The first column of the first row; nothing when there is none.
template <class... Values>
std::optional<std::string> findText(Database& database, const std::string& sql, const Values&... values)
{
    auto row = query(database, sql, values...);
    return row.executeStep() ? std::optional(row.getColumn(0).getString()) : std::nullopt;
}

} // namespace standin
