#include "cli/LoginInput.h"

#include "cli/KeyFile.h"
#include "platform/Environment.h"
#include "platform/Terminal.h"
#include "platform/TerminalInput.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

std::optional<std::string> askOnTerminal(const std::string& question, std::ostream& out) {
    out << question;
    out.flush();
    TerminalInput input;
    InputLine line = input.readLine(false);
    if (line.kind != InputLine::Kind::Line) return std::nullopt;
    return line.text;
}

std::optional<std::string> readPassword(const std::optional<std::string>& passwordFile, const std::string& question,
                                        std::ostream& errors) {
    if (passwordFile) {
        const auto password = passwordFromFile(*passwordFile);
        if (!password) fmt::print(errors, "stowhaven: no password in <{}>\n", *passwordFile);
        return password;
    }
    if (auto password = environmentVariable("STOWHAVEN_PASSWORD")) return password;
    fmt::print(errors, "{}", question);
    errors.flush();
    TerminalInput input;
    InputLine line = input.readLine(true);
    // A terminal ends the question's line itself; a pipe typed nothing there.
    if (!Terminal::isStandardInputATerminal()) errors << '\n';
    if (line.kind != InputLine::Kind::Line) return std::nullopt;
    return line.text;
}

}  // namespace stowhaven
