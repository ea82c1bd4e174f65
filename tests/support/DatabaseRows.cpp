#include "support/DatabaseRows.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace stowhaven::test {

namespace {

std::string columnText(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL:
            return "NULL";
        case SQLITE_BLOB:
            return "blob:" + std::to_string(sqlite3_column_bytes(statement, column));
        default:
            return reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    }
}

}  // namespace

std::vector<std::string> databaseRows(const std::string& path, const std::string& query) {
    std::vector<std::string> rows;
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(database);
        return rows;
    }
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, query.c_str(), -1, &statement, nullptr) == SQLITE_OK) {
        while (sqlite3_step(statement) == SQLITE_ROW) {
            std::string row;
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                row += (column == 0 ? "" : "|") + columnText(statement, column);
            }
            rows.push_back(std::move(row));
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return rows;
}

void executeOnDatabase(const std::string& path, const std::string& statements) {
    sqlite3* database = nullptr;
    char* error = nullptr;
    if (sqlite3_open(path.c_str(), &database) != SQLITE_OK ||
        sqlite3_exec(database, statements.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
        ADD_FAILURE() << "On <" << path << ">: " << (error ? error : sqlite3_errmsg(database));
    }
    sqlite3_free(error);
    sqlite3_close(database);
}

}  // namespace stowhaven::test
