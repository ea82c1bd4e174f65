#include "cli/SelectCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/SelectionLine.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "flows/PhotoVideoViewController.h"
#include "flows/SelectableItemViewController.h"
#include "flows/SelectableOptionsViewController.h"
#include "items/PhotoVideoManager.h"
#include "restore/RestoreSelection.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <memory>
#include <optional>

namespace stowhaven {

namespace {

constexpr int kUsageError = 2;
constexpr std::string_view kFolderKind = "folder";
constexpr std::string_view kAlbumsKind = "albums";

// The scan that finds a kind's items, on for this run.
void turnOnScanOf(SelectionKind kind) {
    switch (kind) {
        case SelectionKind::Applications:
            gAutoScanAppStoreAppsEnabled = true;
            break;
        case SelectionKind::StockApps:
            gAutoScanStockAppsEnabled = true;
            break;
        case SelectionKind::Folders:
            gAutoScanOtherOptionsEnabled = true;
            break;
        default:
            gAutoScanPkgEnabled = true;
            break;
    }
}

std::string kindNames() {
    std::vector<std::string> names;
    for (const SelectionKind kind : kSelectionKinds) names.emplace_back(selectionKindName(kind));
    return fmt::format("{}, {} NAME, {}", fmt::join(names, ", "), kFolderKind, kAlbumsKind);
}

// One list the command works on: its name in the output, and for the albums its side.
struct NamedList {
    std::string title;
    std::optional<std::string> side;
    SelectionList* list;
};

// The lists a run works on, with the screen logic that owns them and keeps their default.
struct Selection {
    std::shared_ptr<void> screen;
    std::vector<NamedList> lists;
    std::function<bool()> saveAsDefault;
    // Packages only.
    std::function<void()> selectFWCompatible;
};

std::string directionName(bool backup) { return backup ? "backup" : "restore"; }

void printJson(const std::string& kind, const Selection& selection, bool saved, std::ostream& out) {
    nlohmann::json items = nlohmann::json::array();
    for (const NamedList& named : selection.lists) {
        for (const auto& row : named.list->rows()) {
            nlohmann::json item = {{"name", row->key()}, {"title", row->title()}, {"selected", row->isSelected()}};
            if (row->size() >= 0) item["size"] = row->size();
            if (named.side) item["side"] = *named.side;
            items.push_back(std::move(item));
        }
    }
    nlohmann::json json = {
        {"kind", kind}, {"direction", directionName(gIsBackupMode)}, {"savedAsDefault", saved}, {"items", items}};
    if (kind == kFolderKind) json["folder"] = selection.lists.front().title;
    out << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void printText(const Selection& selection, bool changed, bool saved, std::ostream& out) {
    for (const NamedList& named : selection.lists) {
        fmt::print(out, "{} for {}: {}\n", named.title, directionName(gIsBackupMode),
                   named.list->selectedCountStatus());
        for (const auto& row : named.list->rows()) fmt::print(out, "  {}\n", selectionLine(*row));
    }
    if (saved) {
        fmt::print(out, "Saved as the default of the next {}.\n", directionName(gIsBackupMode));
    } else if (changed) {
        fmt::print(out, "Not saved; add --save-default to keep this selection.\n");
    }
}

void apply(const SelectCommand::Changes& changes, SelectionList& list) {
    if (changes.all) list.selectAll();
    if (changes.none) list.selectNone();
    if (changes.invert) list.invertSelection();
    if (!changes.only.empty()) list.selectNone();
    for (const auto* names : {&changes.only, &changes.add}) {
        for (const std::string& name : *names) list.setSelected(name, true);
    }
    for (const std::string& name : changes.remove) list.setSelected(name, false);
}

Selection kindSelection(SelectionKind kind) {
    auto screen = std::make_shared<SelectableOptionsViewController>(std::vector<SelectionKind>{kind});
    return {screen,
            {{std::string(selectionKindName(kind)), std::nullopt, &screen->list()}},
            [screen] {
                screen->saveAsDefault();
                return true;
            },
            [screen] { screen->selectFWCompatible(); }};
}

Selection folderSelection(std::shared_ptr<ArchivableFolder> folder) {
    auto screen = std::make_shared<SelectableItemViewController>(std::move(folder));
    return {screen,
            {{screen->folder()->name(), std::nullopt, &screen->list()}},
            [screen] { return screen->saveAsDefault(); },
            {}};
}

Selection albumSelection(bool photos, bool videos) {
    auto screen = std::make_shared<PhotoVideoViewController>();
    Selection selection{screen,
                        {},
                        [screen] {
                            screen->saveAsDefault();
                            return true;
                        },
                        {}};
    if (photos) selection.lists.push_back({"albums (photos)", "photos", &screen->list(true)});
    if (videos) selection.lists.push_back({"albums (videos)", "videos", &screen->list(false)});
    return selection;
}

}  // namespace

void SelectCommand::add(CLI::App& app) {
    command_ = app.add_subcommand("select", "Choose what a backup or a restore covers");
    command_->add_option("kind", kind_, "What to choose among: " + kindNames())->required();
    command_->add_option("name", folder_, "With folder: the folder whose items to choose");
    command_->add_flag("--json", asJson_, "Show the list as JSON");
    command_->add_flag("--restore", restore_, "Choose what a restore of the current session covers");
    CLI::Option* all = command_->add_flag("--all", changes_.all, "Select every item first");
    CLI::Option* none = command_->add_flag("--none", changes_.none, "Select no item first");
    CLI::Option* invert = command_->add_flag("--invert", changes_.invert, "Invert the selection first");
    CLI::Option* firmware = command_->add_flag("--fw-compatible", changes_.fwCompatible,
                                               "Select the packages made for the device's firmware first");
    for (CLI::Option* option : {all, none, invert, firmware}) {
        for (CLI::Option* other : {all, none, invert, firmware}) {
            if (option != other) option->excludes(other);
        }
    }
    command_->add_option("--only", changes_.only, "Select these items and no other");
    command_->add_option("--add", changes_.add, "Select these items");
    command_->add_option("--remove", changes_.remove, "Deselect these items");
    CLI::Option* photos = command_->add_flag("--photos", photos_, "With albums: the albums' photos only");
    CLI::Option* videos = command_->add_flag("--videos", videos_, "With albums: the albums' videos only");
    photos->excludes(videos);
    command_->add_flag("--save-default", saveDefault_, "Keep the result as the default of the direction");
}

int SelectCommand::run(std::ostream& out, std::ostream& errors) const {
    const auto kind = selectionKindNamed(kind_);
    const bool albums = kind_ == kAlbumsKind;
    const bool folder = kind_ == kFolderKind;
    const auto usage = [&](std::string_view message) {
        fmt::print(errors, "stowhaven: {}\n", message);
        return kUsageError;
    };
    if (!kind && !albums && !folder)
        return usage(fmt::format("no list named \"{}\"; the lists are {}", kind_, kindNames()));
    if (folder && folder_.empty()) return usage("select folder needs the folder's name");
    if (!folder && !folder_.empty()) return usage("only select folder takes a name");
    if (changes_.fwCompatible && kind != SelectionKind::Packages) return usage("--fw-compatible is for packages only");
    if ((photos_ || videos_) && !albums) return usage("--photos and --videos are for albums only");

    if (kind) turnOnScanOf(*kind);
    if (folder) turnOnScanOf(SelectionKind::Folders);
    if (albums) {
        gAutoScanPhotosEnabled = true;
        gAutoScanVideosEnabled = true;
    }
    // As the main screen does, the library is read before the catalogue, on a storage that
    // keeps albums.
    if (albums && !restore_ && Supervisor::shared().isCloudStorage()) PhotoVideoManager::shared().reset();
    loadCatalogue();
    const auto session = CydiaFileManager::shared().currentBackupSession();
    if (restore_ && !session) {
        fmt::print(errors, "stowhaven: the storage holds no session to restore\n");
        return 1;
    }
    gIsBackupMode = !restore_;
    // What the restore would take when no one picks by hand.
    if (restore_) selectRestoreDefaults(*session);

    Selection selection;
    if (kind) {
        selection = kindSelection(*kind);
    } else if (albums) {
        selection = albumSelection(!videos_, !photos_);
    } else if (auto place = SelectableItemViewController::folderNamed(folder_, gIsBackupMode)) {
        selection = folderSelection(std::move(place));
    } else {
        fmt::print(errors, "stowhaven: no folder named \"{}\" whose items are chosen one by one; see select folders\n",
                   folder_);
        return kUsageError;
    }

    // Every name is checked before anything changes.
    for (const NamedList& named : selection.lists) {
        for (const auto* names : {&changes_.only, &changes_.add, &changes_.remove}) {
            for (const std::string& name : *names) {
                if (!named.list->rowNamed(name)) {
                    fmt::print(errors, "stowhaven: {} has no item named \"{}\"; nothing was changed\n", named.title,
                               name);
                    return kUsageError;
                }
            }
        }
    }
    if (changes_.fwCompatible) selection.selectFWCompatible();
    for (const NamedList& named : selection.lists) apply(changes_, *named.list);
    if (saveDefault_ && !selection.saveAsDefault()) {
        fmt::print(errors, "stowhaven: {} keeps no default of its own: its items are all taken\n", folder_);
        return 1;
    }

    if (asJson_) {
        printJson(kind_, selection, saveDefault_, out);
    } else {
        printText(selection, changes_.any(), saveDefault_, out);
    }
    return 0;
}

}  // namespace stowhaven
