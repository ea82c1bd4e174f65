#include "cli/SelectCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/SelectionLine.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "flows/SelectableOptionsViewController.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

constexpr int kUsageError = 2;

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
    return fmt::format("{}", fmt::join(names, ", "));
}

void printJson(const SelectableOptionsViewController& screen, bool saved, std::ostream& out) {
    nlohmann::json items = nlohmann::json::array();
    for (const auto& row : screen.data()) {
        nlohmann::json item = {{"name", row->key()}, {"title", row->title()}, {"selected", row->isSelected()}};
        if (row->size() >= 0) item["size"] = row->size();
        items.push_back(std::move(item));
    }
    const nlohmann::json json = {{"kind", selectionKindName(screen.tableContentType())},
                                 {"direction", screen.backupMode() ? "backup" : "restore"},
                                 {"savedAsDefault", saved},
                                 {"items", items}};
    out << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void printText(const SelectableOptionsViewController& screen, bool changed, bool saved, std::ostream& out) {
    fmt::print(out, "{} for {}: {}\n", selectionKindName(screen.tableContentType()),
               screen.backupMode() ? "backup" : "restore", screen.selectedCountStatus());
    for (const auto& row : screen.data()) fmt::print(out, "  {}\n", selectionLine(*row));
    if (saved) {
        fmt::print(out, "Saved as the default of the next {}.\n", screen.backupMode() ? "backup" : "restore");
    } else if (changed) {
        fmt::print(out, "Not saved; add --save-default to keep this selection.\n");
    }
}

}  // namespace

void SelectCommand::add(CLI::App& app) {
    command_ = app.add_subcommand("select", "Choose what a backup or a restore covers");
    command_->add_option("kind", kind_, "What to choose among: " + kindNames())->required();
    command_->add_flag("--json", asJson_, "Show the list as JSON");
    command_->add_flag("--restore", restore_, "Choose what a restore of the current session covers");
    CLI::Option* all = command_->add_flag("--all", all_, "Select every item first");
    CLI::Option* none = command_->add_flag("--none", none_, "Select no item first");
    CLI::Option* invert = command_->add_flag("--invert", invert_, "Invert the selection first");
    CLI::Option* firmware = command_->add_flag("--fw-compatible", fwCompatible_,
                                               "Select the packages made for the device's firmware first");
    for (CLI::Option* option : {all, none, invert, firmware}) {
        for (CLI::Option* other : {all, none, invert, firmware}) {
            if (option != other) option->excludes(other);
        }
    }
    command_->add_option("--only", only_, "Select these items and no other");
    command_->add_option("--add", add_, "Select these items");
    command_->add_option("--remove", remove_, "Deselect these items");
    command_->add_flag("--save-default", saveDefault_, "Keep the result as the default of the direction");
}

int SelectCommand::run(std::ostream& out, std::ostream& errors) const {
    const auto kind = selectionKindNamed(kind_);
    if (!kind) {
        fmt::print(errors, "stowhaven: no list named \"{}\"; the lists are {}\n", kind_, kindNames());
        return kUsageError;
    }
    if (fwCompatible_ && *kind != SelectionKind::Packages) {
        fmt::print(errors, "stowhaven: --fw-compatible is for packages only\n");
        return kUsageError;
    }
    turnOnScanOf(*kind);
    loadCatalogue();
    if (restore_ && !CydiaFileManager::shared().currentBackupSession()) {
        fmt::print(errors, "stowhaven: the storage holds no session to restore\n");
        return 1;
    }
    gIsBackupMode = !restore_;
    SelectableOptionsViewController screen({*kind});

    // Every name is checked before anything changes.
    for (const auto* names : {&only_, &add_, &remove_}) {
        for (const std::string& name : *names) {
            if (!screen.rowNamed(name)) {
                fmt::print(errors, "stowhaven: {} has no item named \"{}\"; nothing was changed\n", kind_, name);
                return kUsageError;
            }
        }
    }
    if (all_) screen.selectAll();
    if (none_) screen.selectNone();
    if (invert_) screen.invertSelection();
    if (fwCompatible_) screen.selectFWCompatible();
    if (!only_.empty()) screen.selectNone();
    for (const auto* names : {&only_, &add_}) {
        for (const std::string& name : *names) screen.setSelected(name, true);
    }
    for (const std::string& name : remove_) screen.setSelected(name, false);
    if (saveDefault_) screen.saveAsDefault();

    const bool changed =
        all_ || none_ || invert_ || fwCompatible_ || !only_.empty() || !add_.empty() || !remove_.empty();
    if (asJson_) {
        printJson(screen, saveDefault_, out);
    } else {
        printText(screen, changed, saveDefault_, out);
    }
    return 0;
}

}  // namespace stowhaven
