#include "cli/SelectionTerminal.h"

#include "cli/SelectionLine.h"
#include "cli/TerminalFlow.h"
#include "cli/TextWrap.h"
#include "core/Text.h"
#include "flows/PackageActions.h"
#include "flows/SelectableOptionsViewController.h"
#include "platform/Strings.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

namespace {

constexpr std::size_t kPageLength = 15;

constexpr std::string_view kHelp =
    "Commands: a all, n none, i invert, f firmware-compatible packages, numbers or ranges (2 5-7) switch "
    "items, /text search (/ alone ends it), s save as default, d N details of package N, '>' and '<' "
    "turn pages, l next list, o name|size|date sorts applications, ? this help, q or an empty line back.";

// One selection screen on the terminal: its list a page at a time, and a command line.
class SelectionTerminal {
public:
    SelectionTerminal(TerminalFlow& flow, FlowScreen screen) : flow_(flow), screen_(selectionKindsOf(screen)) {}

    void run() {
        say(std::string(kHelp));
        while (true) {
            draw();
            const auto line = flow_.prompt()->readText("> ");
            if (!line) return;
            const std::string command = textutil::trimmed(*line);
            if (command.empty() || command == "q" || command == "0") return;
            perform(command);
        }
    }

private:
    void say(std::string_view text) { fmt::print(flow_.out(), "{}\n", wrapped(text, flow_.width())); }

    std::size_t pageCount() const {
        return std::max<std::size_t>(1, (screen_.rows().size() + kPageLength - 1) / kPageLength);
    }

    void draw() {
        page_ = std::min(page_, pageCount() - 1);
        std::vector<std::string> lists;
        for (const SelectionKind kind : screen_.segments()) lists.emplace_back(selectionKindName(kind));
        say(fmt::format("\n{} to {} - {}", selectionKindName(screen_.tableContentType()),
                        screen_.backupMode() ? "back up" : "restore", screen_.selectedCountStatus()));
        if (lists.size() > 1) say(fmt::format("Lists: {} (l switches)", fmt::join(lists, ", ")));
        if (screen_.filteredData()) say(fmt::format("Search: {} ({} found)", search_, screen_.rows().size()));
        const SelectionRows& rows = screen_.rows();
        const std::size_t first = page_ * kPageLength;
        for (std::size_t index = first; index < std::min(rows.size(), first + kPageLength); ++index) {
            fmt::print(flow_.out(), "{}\n",
                       wrappedBehind(fmt::format("{:>4}) ", index + 1), selectionLine(*rows[index]), flow_.width()));
        }
        if (rows.empty()) say("  (nothing in this list)");
        if (pageCount() > 1) say(fmt::format("Page {} of {}", page_ + 1, pageCount()));
    }

    void perform(const std::string& command) {
        const std::string argument = textutil::trimmed(std::string_view(command).substr(1));
        switch (command.front()) {
            case 'a':
                return changed([&] { screen_.selectAll(); });
            case 'n':
                return changed([&] { screen_.selectNone(); });
            case 'i':
                return changed([&] { screen_.invertSelection(); });
            case 'f':
                if (!screen_.selectFWCompatible()) say("Only packages are chosen by firmware.");
                return;
            case 's':
                screen_.saveAsDefault();
                return say(
                    fmt::format("Saved as the default of the next {}.", screen_.backupMode() ? "backup" : "restore"));
            case '/':
                search_ = std::string(argument);
                screen_.search(search_);
                if (!search_.empty() && !screen_.fCanDisplaySearchBar()) say("This list has no search.");
                page_ = 0;
                return;
            case '>':
            case '<':
                page_ = command.front() == '>' ? std::min(page_ + 1, pageCount() - 1) : (page_ > 0 ? page_ - 1 : 0);
                return;
            case 'l':
                screen_.changeTableContent((segmentIndex() + 1) % screen_.segments().size());
                search_.clear();
                page_ = 0;
                return;
            case 'o':
                return sort(argument);
            case 'd':
                return showPackage(argument);
            case '?':
                return say(std::string(kHelp));
            default:
                return switchItems(command);
        }
    }

    std::size_t segmentIndex() const {
        const auto& segments = screen_.segments();
        return static_cast<std::size_t>(std::find(segments.begin(), segments.end(), screen_.tableContentType()) -
                                        segments.begin());
    }

    template <typename Change>
    void changed(Change change) {
        change();
        if (const auto total = screen_.totalSelectedSize()) say(*total);
    }

    void sort(std::string_view key) {
        const std::pair<std::string_view, SelectableOptionsViewController::SortSegment> sorts[] = {
            {"name", SelectableOptionsViewController::kSortByName},
            {"size", SelectableOptionsViewController::kSortBySize},
            {"date", SelectableOptionsViewController::kSortByInstallDate}};
        if (screen_.tableContentType() != SelectionKind::Applications) return say("Only applications are sorted.");
        for (const auto& [name, segment] : sorts) {
            if (name == key) return screen_.sortBy(segment);
        }
        say("Sort by name, size or date.");
    }

    // "3", "2-5", several apart by blanks or commas; nothing when a part is no number of the list.
    std::optional<std::vector<std::size_t>> itemNumbers(const std::string& text) const {
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

    // A number of a line on show.
    std::optional<std::size_t> number(std::string_view text) const {
        std::size_t value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size() || value < 1 || value > screen_.rows().size()) {
            return std::nullopt;
        }
        return value;
    }

    void switchItems(const std::string& command) {
        const auto numbers = itemNumbers(command);
        if (!numbers)
            return say(fmt::format("\"{}\" is no command nor number of the list; ? shows the commands.", command));
        changed([&] {
            for (const std::size_t index : *numbers) screen_.switchState(index);
        });
    }

    void showPackage(std::string_view argument) {
        const auto index = number(argument);
        if (screen_.tableContentType() != SelectionKind::Packages || !index) {
            return say("Give the number of a package of the list: d 3.");
        }
        const auto& package = static_cast<const PackageRow&>(*screen_.rows()[*index - 1]).package();
        for (const auto& [label, value] : PackageActions::details(*package)) {
            fmt::print(flow_.out(), "{}\n", wrappedBehind(fmt::format("{:<14}", label + ":"), value, flow_.width()));
        }
        const bool backup = screen_.backupMode();
        const Alert sheet{
            0,
            Strings::localized("PACKAGE_ACTION_TYPE"),
            fmt::format("{} {}?", PackageActions::actionTitle(backup), package->packageName().value_or("")),
            {Strings::localized("DISMISS_BUTTON"), PackageActions::actionTitle(backup)}};
        const auto answer = flow_.prompt()->ask(sheet);
        if (answer.kind != TerminalPrompt::Result::Kind::Answered || answer.answer.buttonIndex != 1) return;
        if (!PackageActions::run(*package, backup)) say("This package's name can't be handed to the package manager.");
    }

    TerminalFlow& flow_;
    SelectableOptionsViewController screen_;
    std::string search_;
    std::size_t page_ = 0;
};

}  // namespace

void showSelectionScreen(TerminalFlow& flow, FlowScreen screen) {
    if (!flow.prompt()) return;
    SelectionTerminal(flow, screen).run();
    // The size of what the next job takes is on the main screen.
    flow.controller().updateBackupSizeLabel();
}

}  // namespace stowhaven
