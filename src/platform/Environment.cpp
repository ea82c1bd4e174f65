#include "platform/Environment.h"

#include <cstdlib>

namespace stowhaven {

std::optional<std::string> environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) return std::nullopt;
    return std::string(value);
}

}  // namespace stowhaven
