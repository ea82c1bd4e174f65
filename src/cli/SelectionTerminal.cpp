#include "cli/SelectionTerminal.h"

#include "cli/SelectionContentsTerminal.h"
#include "cli/SelectionPager.h"
#include "cli/TerminalFlow.h"
#include "cli/TextWrap.h"
#include "flows/PackageActions.h"
#include "flows/SelectableOptionsViewController.h"
#include "platform/Strings.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <string>
#include <vector>

namespace stowhaven {

namespace {

constexpr std::string_view kHelp =
    "Commands: a all, n none, i invert, f firmware-compatible packages, numbers or ranges (2 5-7) switch "
    "items, /text search (/ alone ends it), s save as default, d N details of package N, c N the items of "
    "folder N, m the photo and video albums (with the stock applications), '>' and '<' turn pages, l next "
    "list, o name|size|date sorts applications, ? this help, q or an empty line back.";

// One selection screen of the main flow on the terminal.
class SelectionTerminal final : public SelectionPager {
public:
    SelectionTerminal(TerminalFlow& flow, FlowScreen screen)
        : SelectionPager(flow, std::string(kHelp)), screen_(selectionKindsOf(screen)) {}

private:
    void drawHeading() override {
        std::vector<std::string> lists;
        for (const SelectionKind kind : screen_.segments()) lists.emplace_back(selectionKindName(kind));
        say(fmt::format("\n{} to {} - {}", selectionKindName(screen_.tableContentType()),
                        screen_.backupMode() ? "back up" : "restore", screen_.selectedCountStatus()));
        if (lists.size() > 1) say(fmt::format("Lists: {} (l switches)", fmt::join(lists, ", ")));
        if (screen_.tableContentType() == SelectionKind::Folders) {
            say("A folder whose items are chosen one by one shows them with c and its number.");
        }
        if (screen_.filteredData()) say(fmt::format("Search: {} ({} found)", search_, screen_.rows().size()));
    }

    const SelectionRows& shownRows() const override { return screen_.rows(); }
    SelectionList& list() override { return screen_.list(); }

    std::string saveAsDefault() override {
        screen_.saveAsDefault();
        return fmt::format("Saved as the default of the next {}.", screen_.backupMode() ? "backup" : "restore");
    }

    void selectionChanged() override {
        if (const auto total = screen_.totalSelectedSize()) say(*total);
    }

    bool performOwn(char command, const std::string& argument) override {
        switch (command) {
            case 'f':
                if (!screen_.selectFWCompatible()) say("Only packages are chosen by firmware.");
                return true;
            case '/':
                search_ = argument;
                screen_.search(search_);
                if (!search_.empty() && !screen_.fCanDisplaySearchBar()) say("This list has no search.");
                showFirstPage();
                return true;
            case 'l':
                screen_.changeTableContent((segmentIndex() + 1) % screen_.segments().size());
                search_.clear();
                showFirstPage();
                return true;
            case 'o':
                sort(argument);
                return true;
            case 'd':
                showPackage(argument);
                return true;
            case 'c':
                showContents(argument);
                return true;
            case 'm':
                showAlbums();
                return true;
            default:
                return false;
        }
    }

    std::size_t segmentIndex() const {
        const auto& segments = screen_.segments();
        return static_cast<std::size_t>(std::find(segments.begin(), segments.end(), screen_.tableContentType()) -
                                        segments.begin());
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

    void showContents(std::string_view argument) {
        const auto index = number(argument);
        if (screen_.tableContentType() != SelectionKind::Folders || !index) {
            return say("Give the number of a folder of the list: c 3.");
        }
        const auto& folder = static_cast<const FolderRow&>(*screen_.rows()[*index - 1]).folder();
        if (!folder->canSelectContent()) return say(fmt::format("{} is taken whole.", folder->name()));
        showFolderContents(flow_, folder);
    }

    void showAlbums() {
        const auto& segments = screen_.segments();
        if (std::find(segments.begin(), segments.end(), SelectionKind::StockApps) == segments.end()) {
            return say("The albums are chosen with the stock applications.");
        }
        showAlbumsScreen(flow_);
    }

    SelectableOptionsViewController screen_;
    std::string search_;
};

}  // namespace

void showSelectionScreen(TerminalFlow& flow, FlowScreen screen) {
    if (!flow.prompt()) return;
    SelectionTerminal(flow, screen).run();
    // The size of what the next job takes is on the main screen.
    flow.controller().updateBackupSizeLabel();
}

}  // namespace stowhaven
