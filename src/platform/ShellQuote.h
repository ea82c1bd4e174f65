#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// The two ways a value from outside (a session, an imported file, a server, a directory
// listing) may enter a command line.
class ShellQuote {
public:
    // For a value that stands between double quotes in its template: escapes the four
    // characters the shell still reads there (\ " $ `). Other text is unchanged.
    static std::string inDoubleQuotes(std::string_view value);
    // The value escaped as above, between its double quotes: one word for the shell.
    static std::string quoted(std::string_view value);

    // For a package identifier that stands unquoted in its template: the value itself
    // when it holds only letters, digits and + . - _ (and doesn't start with "-", which
    // a tool would read as an option); otherwise nothing, with a log line.
    static std::optional<std::string> packageIdentifier(std::string_view value);

    // For a path that stands unquoted in its template: the path itself when the shell reads
    // it as one word, unchanged (letters, digits and / . _ - + ~ %, not starting with "~");
    // any other between double quotes, escaped as above. A relative path that starts with
    // "-", which a tool would read as an option, gets "./" in front.
    static std::string path(std::string_view value);

    // For a name that must be plain: the name itself when it holds only letters, digits and
    // / . _ - + ~ % (and doesn't start with "-" or "~"); otherwise nothing, with a log line.
    static std::optional<std::string> plainPath(std::string_view value);
};

}  // namespace stowhaven
