#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// What a login asks on the terminal.

// QUESTION put on OUT and a line read with echo; nothing when the input ended.
std::optional<std::string> askOnTerminal(const std::string& question, std::ostream& out);

// The password of a login on the command line, never from an argument: the first line of
// PASSWORDFILE when given, else the variable STOWHAVEN_PASSWORD, else QUESTION put on ERRORS
// and the answer read without echo (from a pipe, its first line). Nothing, having said why,
// when the file has no password or the input ended.
std::optional<std::string> readPassword(const std::optional<std::string>& passwordFile, const std::string& question,
                                        std::ostream& errors);

}  // namespace stowhaven
