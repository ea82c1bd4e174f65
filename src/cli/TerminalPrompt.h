#pragma once

#include "core/AlertPresenter.h"
#include "platform/TerminalInput.h"

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace stowhaven {

// Questions in plain lines, which work over SSH and in scripts fed through a pipe: the
// alert's title, its message wrapped to the width and its buttons numbered from 1
// ("  1) No   2) Yes"), then "> "; the answer is the number typed, asked again with a word
// on what is expected until it is one of them.
class TerminalPrompt {
public:
    struct Result {
        enum class Kind { Answered, EndOfInput, Interrupted };

        Kind kind;
        AlertAnswer answer;
    };

    TerminalPrompt(LineSource& input, std::ostream& out, std::size_t width);

    // An alert with a field first asks for its text ("Title: ", a secure one read without
    // echo), then for the button. With a single button there is nothing to choose: the alert
    // is shown and answered by that button without reading a number.
    Result ask(const Alert& alert);

    // The index of the option picked from a numbered list that ends with "0) Back" (or
    // another word for leaving); nothing when 0 is picked or the input ended or was
    // interrupted.
    std::optional<std::size_t> choose(const std::string& title, const std::vector<std::string>& options,
                                      const std::string& leaving = "Back");

    // A line of free text after LABEL (a screen's command line, say), untrimmed, a SECRET one
    // read without echo; nothing when the input ended or was interrupted.
    std::optional<std::string> readText(const std::string& label, bool secret = false);

private:
    struct Number {
        InputLine::Kind kind;
        std::size_t value;
    };

    void showWrapped(const std::string& text);
    Number readNumber(std::size_t lowest, std::size_t highest);
    InputLine readLine(bool secret);

    LineSource& input_;
    std::ostream& out_;
    std::size_t width_;
};

}  // namespace stowhaven
