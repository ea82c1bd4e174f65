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

std::string ShellQuote::quoted(std::string_view value) { return "\"" + inDoubleQuotes(value) + "\""; }

namespace {

// A stamp holds "~", and an archive name "%", which the shell leaves alone inside a word.
constexpr std::string_view kPlainPathCharacters = "/+.-_~%";

// The value when it is made only of letters, digits and the characters given, and doesn't
// start with "-", which a tool would read as an option, or "~", which the shell expands.
std::optional<std::string> plainWord(std::string_view value, std::string_view otherCharacters) {
    const bool allowed = std::all_of(value.begin(), value.end(), [&](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               otherCharacters.find(c) != std::string_view::npos;
    });
    if (value.empty() || !allowed || value.front() == '-' || value.front() == '~') return std::nullopt;
    return std::string(value);
}

}  // namespace

std::optional<std::string> ShellQuote::packageIdentifier(std::string_view value) {
    auto identifier = plainWord(value, "+.-_");
    if (!identifier) SH_LOG("Refusing package identifier <{}>: not a package name", value);
    return identifier;
}

std::string ShellQuote::path(std::string_view value) {
    const std::string path = value.starts_with('-') ? "./" + std::string(value) : std::string(value);
    return plainWord(path, kPlainPathCharacters) ? path : quoted(path);
}

std::optional<std::string> ShellQuote::plainPath(std::string_view value) {
    auto path = plainWord(value, kPlainPathCharacters);
    if (!path) SH_LOG("Refusing path <{}> in a command: it holds characters the shell would read", value);
    return path;
}

}  // namespace stowhaven
