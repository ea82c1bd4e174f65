#pragma once

#include <map>
#include <string>

namespace stowhaven::test {

// Every item below FOLDER by relative path: a file's mode and contents, a folder's mode.
// Links are not followed.
std::map<std::string, std::string> snapshot(const std::string& folder);

}  // namespace stowhaven::test
