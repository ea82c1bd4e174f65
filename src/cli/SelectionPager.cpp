#include "cli/SelectionPager.h"

#include "cli/SelectionLine.h"
#include "cli/TerminalFlow.h"
#include "cli/TextWrap.h"
#include "core/Text.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <charconv>
#include <vector>

namespace stowhaven {

namespace {

constexpr std::size_t kPageLength = 15;

}  // namespace

void SelectionPager::run() {
    say(help_);
    while (true) {
        draw();
        const auto line = flow_.prompt()->readText("> ");
        if (!line) return;
        const std::string command = textutil::trimmed(*line);
        if (command.empty() || command == "q" || command == "0") return;
        perform(command);
    }
}

void SelectionPager::say(std::string_view text) { fmt::print(flow_.out(), "{}\n", wrapped(text, flow_.width())); }

std::size_t SelectionPager::pageCount() const {
    return std::max<std::size_t>(1, (shownRows().size() + kPageLength - 1) / kPageLength);
}

void SelectionPager::draw() {
    page_ = std::min(page_, pageCount() - 1);
    drawHeading();
    const SelectionRows& rows = shownRows();
    const std::size_t first = page_ * kPageLength;
    for (std::size_t index = first; index < std::min(rows.size(), first + kPageLength); ++index) {
        fmt::print(flow_.out(), "{}\n",
                   wrappedBehind(fmt::format("{:>4}) ", index + 1), selectionLine(*rows[index]), flow_.width()));
    }
    if (rows.empty()) say("  (nothing in this list)");
    if (pageCount() > 1) say(fmt::format("Page {} of {}", page_ + 1, pageCount()));
}

void SelectionPager::perform(const std::string& command) {
    const std::string argument = textutil::trimmed(std::string_view(command).substr(1));
    switch (command.front()) {
        case 'a':
            return changed(&SelectionList::selectAll);
        case 'n':
            return changed(&SelectionList::selectNone);
        case 'i':
            return changed(&SelectionList::invertSelection);
        case 's':
            return say(saveAsDefault());
        case '>':
        case '<':
            page_ = command.front() == '>' ? std::min(page_ + 1, pageCount() - 1) : (page_ > 0 ? page_ - 1 : 0);
            return;
        case '?':
            return say(help_);
        default:
            if (!performOwn(command.front(), argument)) switchItems(command);
    }
}

void SelectionPager::changed(void (SelectionList::*change)()) {
    (list().*change)();
    selectionChanged();
}

// "3", "2-5", several apart by blanks or commas; nothing when a part is no number of the list.
std::optional<std::vector<std::size_t>> SelectionPager::itemNumbers(const std::string& text) const {
    std::vector<std::size_t> numbers;
    for (const std::string& part : textutil::split(textutil::replacingAll(text, ",", " "), ' ')) {
        if (part.empty()) continue;
        const auto dash = part.find('-');
        const auto first = number(part.substr(0, dash));
        const auto last = dash == std::string::npos ? first : number(part.substr(dash + 1));
        if (!first || !last || *first > *last) return std::nullopt;
        for (std::size_t value = *first; value <= *last; ++value) numbers.push_back(value - 1);
    }
    if (numbers.empty()) return std::nullopt;
    return numbers;
}

std::optional<std::size_t> SelectionPager::number(std::string_view text) const {
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 1 || value > shownRows().size()) {
        return std::nullopt;
    }
    return value;
}

void SelectionPager::switchItems(const std::string& command) {
    const auto numbers = itemNumbers(command);
    if (!numbers)
        return say(fmt::format("\"{}\" is no command nor number of the list; ? shows the commands.", command));
    const SelectionRows& rows = shownRows();
    for (const std::size_t index : *numbers) SelectionList::switchState(*rows[index]);
    selectionChanged();
}

}  // namespace stowhaven
