#include "cli/SelectionContentsTerminal.h"

#include "cli/SelectionPager.h"
#include "flows/PhotoVideoViewController.h"
#include "flows/SelectableItemViewController.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

constexpr std::string_view kCommonHelp =
    "a all, n none, i invert, numbers or ranges (2 5-7) switch items, s save as default, '>' and '<' turn "
    "pages, ? this help, q or an empty line back.";

std::string direction(bool backup) { return backup ? "back up" : "restore"; }

std::string savedText(bool backup) {
    return fmt::format("Saved as the default of the next {}.", backup ? "backup" : "restore");
}

class FolderContentsTerminal final : public SelectionPager {
public:
    FolderContentsTerminal(TerminalFlow& flow, std::shared_ptr<ArchivableFolder> folder)
        : SelectionPager(flow, fmt::format("Commands: {}", kCommonHelp)), screen_(std::move(folder)) {}

private:
    void drawHeading() override {
        say(fmt::format("\n{} to {} - {}", screen_.folder()->name(), direction(screen_.backupMode()),
                        screen_.list().selectedCountStatus()));
        say(screen_.list().totalSelectedSize());
    }
    const SelectionRows& shownRows() const override { return screen_.list().rows(); }
    SelectionList& list() override { return screen_.list(); }
    std::string saveAsDefault() override {
        if (!screen_.saveAsDefault()) return "This folder keeps no default of its own: its items are all taken.";
        return savedText(screen_.backupMode());
    }

    SelectableItemViewController screen_;
};

class AlbumsTerminal final : public SelectionPager {
public:
    explicit AlbumsTerminal(TerminalFlow& flow)
        : SelectionPager(flow, fmt::format("Commands: l photos or videos, {}", kCommonHelp)) {}

private:
    void drawHeading() override {
        say(fmt::format("\n{} of the albums to {} - {}", screen_.showsPhotos() ? "photos" : "videos",
                        direction(screen_.backupMode()), screen_.list().selectedCountStatus()));
        say("Lists: photos, videos (l switches)");
        say(screen_.list().totalSelectedSize());
    }
    const SelectionRows& shownRows() const override { return screen_.list(screen_.showsPhotos()).rows(); }
    SelectionList& list() override { return screen_.list(); }
    std::string saveAsDefault() override {
        screen_.saveAsDefault();
        return savedText(screen_.backupMode());
    }
    bool performOwn(char command, const std::string& /*argument*/) override {
        if (command != 'l') return false;
        screen_.showPhotos(!screen_.showsPhotos());
        showFirstPage();
        return true;
    }

    PhotoVideoViewController screen_;
};

}  // namespace

void showFolderContents(TerminalFlow& flow, const std::shared_ptr<ArchivableFolder>& folder) {
    FolderContentsTerminal(flow, folder).run();
}

void showAlbumsScreen(TerminalFlow& flow) { AlbumsTerminal(flow).run(); }

}  // namespace stowhaven
