#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// The value of a variable of the program's environment; nothing when it is not set.
std::optional<std::string> environmentVariable(const char* name);

}  // namespace stowhaven
