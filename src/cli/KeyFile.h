#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// Secrets are read from the first line of a file, so that they never stand in the program's
// arguments; nothing when the file has no such line.

// The key of an encrypted backup, without blanks around it.
std::optional<std::string> keyFromFile(const std::string& path);
// A password, as it stands on the line: blanks are part of it.
std::optional<std::string> passwordFromFile(const std::string& path);

}  // namespace stowhaven
