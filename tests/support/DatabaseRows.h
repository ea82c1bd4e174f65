#pragma once

#include <string>
#include <vector>

namespace stowhaven::test {

// The rows a query answers on the SQLite database at PATH, each as its columns joined by
// "|" (NULL as "NULL", blobs by their size), read without the system's own code; empty
// when the database or the query fails.
std::vector<std::string> databaseRows(const std::string& path, const std::string& query);
// Runs STATEMENTS on that database; fails the test when they fail.
void executeOnDatabase(const std::string& path, const std::string& statements);

}  // namespace stowhaven::test
