#include "platform/SqliteDatabase.h"

#include <sqlite3.h>

namespace stowhaven {

namespace {

void setError(std::string* error, std::string text) {
    if (error != nullptr) *error = std::move(text);
}

}  // namespace

std::unique_ptr<SqliteDatabase> SqliteDatabase::open(const std::string& path, int flags, std::string* error) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
    if (result != SQLITE_OK) {
        // A handle comes back even on failure, and holds the reason.
        setError(error, handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(result));
        sqlite3_close(handle);
        return nullptr;
    }
    sqlite3_extended_result_codes(handle, 1);
    return std::unique_ptr<SqliteDatabase>(new SqliteDatabase(handle));
}

SqliteDatabase::~SqliteDatabase() { sqlite3_close(handle_); }

bool SqliteDatabase::exec(const std::string& sql, std::string* error) {
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return true;
    setError(error, errorMessage());
    return false;
}

SqliteDatabase::Statement SqliteDatabase::prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(handle_, sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr);
    return Statement(*this, statement, result == SQLITE_OK ? std::string() : errorMessage());
}

void SqliteDatabase::setBusyTimeout(std::chrono::milliseconds timeout) {
    sqlite3_busy_timeout(handle_, static_cast<int>(timeout.count()));
}

std::int64_t SqliteDatabase::lastInsertRowID() const { return sqlite3_last_insert_rowid(handle_); }

std::string SqliteDatabase::errorMessage() const { return sqlite3_errmsg(handle_); }

SqliteDatabase::Statement::Statement(SqliteDatabase& database, sqlite3_stmt* statement, std::string prepareError)
    : database_(&database), statement_(statement), failure_(std::move(prepareError)) {}

SqliteDatabase::Statement::~Statement() { sqlite3_finalize(statement_); }

void SqliteDatabase::Statement::noteBindResult(int result) {
    if (result != SQLITE_OK && failure_.empty()) failure_ = database_->errorMessage();
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bindText(int index, std::string_view text) {
    noteBindResult(sqlite3_bind_text64(statement_, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bindInt(int index, std::int64_t value) {
    noteBindResult(sqlite3_bind_int64(statement_, index, value));
    return *this;
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bindBlob(int index, std::string_view bytes) {
    noteBindResult(sqlite3_bind_blob64(statement_, index, bytes.data(), bytes.size(), SQLITE_TRANSIENT));
    return *this;
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bindNull(int index) {
    noteBindResult(sqlite3_bind_null(statement_, index));
    return *this;
}

SqliteDatabase::Statement& SqliteDatabase::Statement::bindTextOrNull(int index,
                                                                     const std::optional<std::string>& text) {
    return text ? bindText(index, *text) : bindNull(index);
}

SqliteDatabase::Statement::Step SqliteDatabase::Statement::step() {
    if (statement_ == nullptr || !failure_.empty()) {
        if (failure_.empty()) failure_ = "no statement";
        return Step::Error;
    }
    switch (sqlite3_step(statement_)) {
        case SQLITE_ROW:
            return Step::Row;
        case SQLITE_DONE:
            return Step::Done;
        default:
            failure_ = database_->errorMessage();
            return Step::Error;
    }
}

bool SqliteDatabase::Statement::run(std::string* error) {
    Step result = step();
    while (result == Step::Row) result = step();
    if (result == Step::Done) return true;
    setError(error, failure_);
    return false;
}

void SqliteDatabase::Statement::reset() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    failure_.clear();
}

bool SqliteDatabase::Statement::isNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t SqliteDatabase::Statement::columnInt(int column) const { return sqlite3_column_int64(statement_, column); }

std::optional<std::string> SqliteDatabase::Statement::columnText(int column) const {
    if (isNull(column)) return std::nullopt;
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    const int size = sqlite3_column_bytes(statement_, column);
    return text != nullptr ? std::string(text, static_cast<std::size_t>(size)) : std::string();
}

std::optional<std::string> SqliteDatabase::Statement::columnBlob(int column) const {
    if (isNull(column)) return std::nullopt;
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    const int size = sqlite3_column_bytes(statement_, column);
    return bytes != nullptr ? std::string(bytes, static_cast<std::size_t>(size)) : std::string();
}

std::string SqliteDatabase::Statement::errorMessage() const { return failure_; }

SqliteDatabase::Transaction::~Transaction() {
    // A failed statement may already have ended the transaction.
    if (open_ && sqlite3_get_autocommit(database_.handle_) == 0) database_.exec("ROLLBACK");
}

bool SqliteDatabase::Transaction::begin(std::string* error) {
    open_ = database_.exec("BEGIN IMMEDIATE", error);
    return open_;
}

bool SqliteDatabase::Transaction::commit(std::string* error) {
    if (!database_.exec("COMMIT", error)) return false;
    open_ = false;
    return true;
}

}  // namespace stowhaven
