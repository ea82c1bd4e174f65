#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// The key of an encrypted backup, read from the first line of a file, so that it never
// stands in the program's arguments; nothing when the file has no such line.
std::optional<std::string> keyFromFile(const std::string& path);

}  // namespace stowhaven
