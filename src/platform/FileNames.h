#pragma once

#include <string_view>

namespace stowhaven {

// Whether NAME, from a server's listing or a user, stands for one entry of a folder and no
// other: not empty, ".", "..", nor holding a slash, a backslash or a control character.
inline bool isOneFileName(std::string_view name) {
    if (name.empty() || name == "." || name == "..") return false;
    for (const char c : name) {
        if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f) return false;
    }
    return true;
}

}  // namespace stowhaven
