#pragma once

#include <string>
#include <vector>

namespace stowhaven::test {

// Runs SQL on the SQLite database at PATH (made, with its folder, where missing) through a
// connection of the test's own, not the system's code, and answers the rows it gave, each
// as its columns joined by "|" with NULL as "NULL". A failing statement fails the test.
std::vector<std::string> sqlRows(const std::string& path, const std::string& sql);

}  // namespace stowhaven::test
