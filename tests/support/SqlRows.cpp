#include "support/SqlRows.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

namespace stowhaven::test {

namespace {

int collectRow(void* rows, int count, char** values, char**) {
    std::string row;
    for (int column = 0; column < count; ++column) {
        row += (column > 0 ? "|" : "") + std::string(values[column] != nullptr ? values[column] : "NULL");
    }
    static_cast<std::vector<std::string>*>(rows)->push_back(std::move(row));
    return 0;
}

}  // namespace

std::vector<std::string> sqlRows(const std::string& path, const std::string& sql) {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    std::vector<std::string> rows;
    sqlite3* database = nullptr;
    char* message = nullptr;
    if (sqlite3_open(path.c_str(), &database) != SQLITE_OK ||
        sqlite3_exec(database, sql.c_str(), collectRow, &rows, &message) != SQLITE_OK) {
        ADD_FAILURE() << "On <" << path << ">, " << sql << ": " << (message ? message : sqlite3_errmsg(database));
    }
    sqlite3_free(message);
    sqlite3_close(database);
    return rows;
}

}  // namespace stowhaven::test
