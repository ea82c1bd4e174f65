#include "cli/TerminalPrompt.h"

#include "cli/TextWrap.h"
#include "core/Text.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <charconv>

namespace stowhaven {

namespace {

TerminalPrompt::Result unanswered(InputLine::Kind kind) {
    const auto resultKind = kind == InputLine::Kind::Interrupted ? TerminalPrompt::Result::Kind::Interrupted
                                                                 : TerminalPrompt::Result::Kind::EndOfInput;
    return {resultKind, {}};
}

// All buttons on one line when they fit, else one a line.
std::string buttonList(const std::vector<std::string>& buttons, std::size_t width) {
    std::string oneLine;
    std::string lines;
    for (std::size_t index = 0; index < buttons.size(); ++index) {
        const std::string number = fmt::format("{}) ", index + 1);
        oneLine += (index == 0 ? "  " : "   ") + number + buttons[index];
        lines += wrappedBehind("  " + number, buttons[index], width) + "\n";
    }
    return columnCount(oneLine) <= width ? oneLine + "\n" : lines;
}

}  // namespace

TerminalPrompt::TerminalPrompt(LineSource& input, std::ostream& out, std::size_t width)
    : input_(input), out_(out), width_(width) {}

TerminalPrompt::Result TerminalPrompt::ask(const Alert& alert) {
    showWrapped(alert.title);
    showWrapped(alert.message);
    AlertAnswer answer;
    if (alert.field != Alert::Field::None) {
        out_ << (alert.title.empty() ? "Text" : alert.title) << ": ";
        InputLine line = readLine(alert.field == Alert::Field::Secure);
        if (line.kind != InputLine::Kind::Line) return unanswered(line.kind);
        answer.fieldText = std::move(line.text);
    }
    if (alert.buttons.size() > 1) {
        out_ << buttonList(alert.buttons, width_);
        const Number number = readNumber(1, alert.buttons.size());
        if (number.kind != InputLine::Kind::Line) return unanswered(number.kind);
        answer.buttonIndex = number.value - 1;
    }
    out_.flush();
    return {Result::Kind::Answered, std::move(answer)};
}

std::optional<std::size_t> TerminalPrompt::choose(const std::string& title, const std::vector<std::string>& options,
                                                  const std::string& leaving) {
    showWrapped(title);
    for (std::size_t index = 0; index < options.size(); ++index) {
        out_ << wrappedBehind(fmt::format("  {}) ", index + 1), options[index], width_) << '\n';
    }
    out_ << wrappedBehind("  0) ", leaving, width_) << '\n';
    const Number number = readNumber(0, options.size());
    if (number.kind != InputLine::Kind::Line || number.value == 0) return std::nullopt;
    return number.value - 1;
}

std::optional<std::string> TerminalPrompt::readText(const std::string& label, bool secret) {
    out_ << label;
    InputLine line = readLine(secret);
    if (line.kind != InputLine::Kind::Line) return std::nullopt;
    return std::move(line.text);
}

void TerminalPrompt::showWrapped(const std::string& text) {
    if (!text.empty()) out_ << wrapped(text, width_) << '\n';
}

TerminalPrompt::Number TerminalPrompt::readNumber(std::size_t lowest, std::size_t highest) {
    while (true) {
        out_ << "> ";
        const InputLine line = readLine(false);
        if (line.kind != InputLine::Kind::Line) return {line.kind, 0};
        const std::string typed = textutil::trimmed(line.text);
        std::size_t value = 0;
        const auto [end, error] = std::from_chars(typed.data(), typed.data() + typed.size(), value);
        if (error == std::errc() && end == typed.data() + typed.size() && value >= lowest && value <= highest) {
            return {InputLine::Kind::Line, value};
        }
        fmt::print(out_, "Type a number from {} to {}.\n", lowest, highest);
    }
}

InputLine TerminalPrompt::readLine(bool secret) {
    out_.flush();
    InputLine line = input_.readLine(secret);
    // Ctrl-D and Ctrl-C leave the cursor after the prompt.
    if (line.kind != InputLine::Kind::Line) out_ << '\n' << std::flush;
    return line;
}

}  // namespace stowhaven
