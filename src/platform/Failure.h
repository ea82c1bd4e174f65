#pragma once

#include <string>

namespace stowhaven {

// The end of an operation that answers false with its reason in an optional error text.
inline bool fail(std::string* error, std::string reason) {
    if (error != nullptr) *error = std::move(reason);
    return false;
}

}  // namespace stowhaven
