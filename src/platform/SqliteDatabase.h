#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace stowhaven {

// One connection to an SQLite database file, closed with the object. Values always go
// through bound parameters, never into the text of a statement.
class SqliteDatabase {
public:
    class Statement;
    class Transaction;

    // flags are sqlite3_open_v2's (SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, ...);
    // nothing, with the reason in error, when the file can't be opened.
    static std::unique_ptr<SqliteDatabase> open(const std::string& path, int flags, std::string* error = nullptr);

    ~SqliteDatabase();
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    // Runs statements without parameters or results, such as table definitions.
    bool exec(const std::string& sql, std::string* error = nullptr);
    // A statement that failed to prepare reports it at its first step.
    Statement prepare(const std::string& sql);
    // How long a statement waits for another connection's lock before it fails as busy.
    void setBusyTimeout(std::chrono::milliseconds timeout);

    std::int64_t lastInsertRowID() const;
    // The text of the last failure of this connection.
    std::string errorMessage() const;

private:
    explicit SqliteDatabase(sqlite3* handle) : handle_(handle) {}

    sqlite3* handle_;
};

// A prepared statement: bind its parameters (numbered from 1), step through its rows,
// read the columns (numbered from 0) of the current row.
class SqliteDatabase::Statement {
public:
    enum class Step { Row, Done, Error };

    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // A parameter that can't be bound makes the next step fail.
    Statement& bindText(int index, std::string_view text);
    Statement& bindInt(int index, std::int64_t value);
    Statement& bindBlob(int index, std::string_view bytes);
    Statement& bindNull(int index);
    // Text, or NULL for nothing.
    Statement& bindTextOrNull(int index, const std::optional<std::string>& text);

    Step step();
    // Steps to the end; false, with the reason in error, when a step fails.
    bool run(std::string* error = nullptr);
    // Ready to run again with new parameters.
    void reset();

    bool isNull(int column) const;
    std::int64_t columnInt(int column) const;
    // Nothing for NULL.
    std::optional<std::string> columnText(int column) const;
    std::optional<std::string> columnBlob(int column) const;

    // The reason of the last failure.
    std::string errorMessage() const;

private:
    friend class SqliteDatabase;
    Statement(SqliteDatabase& database, sqlite3_stmt* statement, std::string prepareError);
    void noteBindResult(int result);

    SqliteDatabase* database_;
    sqlite3_stmt* statement_;
    std::string failure_;
};

// A write transaction (BEGIN IMMEDIATE), rolled back when it goes without a commit.
class SqliteDatabase::Transaction {
public:
    explicit Transaction(SqliteDatabase& database) : database_(database) {}
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    bool begin(std::string* error = nullptr);
    bool commit(std::string* error = nullptr);

private:
    SqliteDatabase& database_;
    bool open_ = false;
};

}  // namespace stowhaven
