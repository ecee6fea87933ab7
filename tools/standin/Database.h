#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace standin {

// The store cannot be read or written: unreadable, damaged, locked, or its disk is full.
class StoreError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Bytes bound without a copy; they must outlive the statement's steps.
struct Blob
{
    std::string_view bytes;
};

class Statement
{
public:
    Statement(sqlite3* database, const std::string& sql);

    template <class... Values>
    Statement& bind(const Values&... values)
    {
        reset();
        int index = 0;
        (bindOne(++index, values), ...);
        return *this;
    }

    Statement& bindAll(const std::vector<std::string>& texts);

    // Moves to the next row; false when there is none.
    bool step();
    std::int64_t number(int column) const;
    std::string text(int column) const { return std::string(view(column)); }
    // Valid until the next step.
    std::string_view view(int column) const;

private:
    void reset();
    void bindOne(int index, std::int64_t value);
    void bindOne(int index, std::string_view value);
    void bindOne(int index, Blob value);
    void check(int result) const;

    struct Finalize
    {
        void operator()(sqlite3_stmt* statement) const;
    };
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

class Database
{
public:
    // An empty path is a store in memory. Makes the tables of a new store, checks those of an existing one.
    explicit Database(const std::string& path);

    Statement prepare(const std::string& sql) { return {database_.get(), sql}; }

    // The statement with its values bound, not yet stepped.
    template <class... Values>
    Statement query(const std::string& sql, const Values&... values)
    {
        auto statement = prepare(sql);
        statement.bind(values...);
        return statement;
    }

    template <class... Values>
    void execute(const std::string& sql, const Values&... values)
    {
        query(sql, values...).step();
    }

    // How many rows the last change touched.
    std::int64_t changes() const;

private:
    void checkIntegrity();
    void prepareSchema();

    struct Close
    {
        void operator()(sqlite3* database) const;
    };
    std::unique_ptr<sqlite3, Close> database_;
};

// All or nothing: what was changed since its making is undone unless commit was called.
class Transaction
{
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    Database& database_;
    bool open_ = true;
};

} // namespace standin
