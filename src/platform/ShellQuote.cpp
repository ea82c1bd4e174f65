#include "platform/ShellQuote.h"

#include "platform/Log.h"

#include <algorithm>

namespace stowhaven {

std::string ShellQuote::inDoubleQuotes(std::string_view value) {
    std::string quoted;
    quoted.reserve(value.size());
    for (char c : value) {
        if (c == '\\' || c == '"' || c == '$' || c == '`') quoted += '\\';
        quoted += c;
    }
    return quoted;
}

std::optional<std::string> ShellQuote::packageIdentifier(std::string_view value) {
    const bool allowed = std::all_of(value.begin(), value.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
               c == '.' || c == '-' || c == '_';
    });
    if (value.empty() || !allowed || value.front() == '-') {
        SH_LOG("Refusing package identifier <{}>: not a package name", value);
        return std::nullopt;
    }
    return std::string(value);
}

}  // namespace stowhaven
