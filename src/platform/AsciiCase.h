#pragma once

#include <string_view>

namespace stowhaven {

// Case of the ASCII letters alone, whatever the locale of the process: the device's names,
// keys and settings compare this way, and other bytes stay as they are.
inline char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
inline char asciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

inline bool equalsIgnoringAsciiCase(std::string_view text, std::string_view other) {
    if (text.size() != other.size()) return false;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (asciiLower(text[index]) != asciiLower(other[index])) return false;
    }
    return true;
}

inline bool beginsIgnoringAsciiCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && equalsIgnoringAsciiCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace stowhaven
