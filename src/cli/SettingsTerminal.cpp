#include "cli/SettingsTerminal.h"

#include "cli/BackupCalendarTerminal.h"
#include "cli/EngineChoice.h"
#include "cli/SwitchListTerminal.h"
#include "cli/TerminalFlow.h"
#include "cli/TextWrap.h"
#include "core/Supervisor.h"
#include "flows/InAppSettingsViewController.h"
#include "flows/SettingsViewController.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <string>
#include <vector>

namespace stowhaven {

namespace {

std::string engineRowText(const SettingsViewController::EngineRowState& state) {
    return state.highlighted ? fmt::format("{} (in use)", state.row->title) : state.row->title;
}

// Each round first shows what the last choice left on the main queue (an alert, say).
void showEngineRows(TerminalFlow& flow, SettingsViewController& settings) {
    while (true) {
        flow.settle();
        const auto rows = settings.engineRows();
        std::vector<std::string> options;
        for (const auto& state : rows) options.push_back(engineRowText(state));
        const auto chosen = flow.prompt()->choose("\nStorage engines", options);
        if (!chosen) return;
        const EngineRow& row = *rows[*chosen].row;
        switch (settings.tapEngineRow(*chosen)) {
            case SettingsViewController::TapResult::LoginNeeded:
                takeEngine(row.type, *flow.prompt(), flow.out());
                break;
            case SettingsViewController::TapResult::Refused:
                fmt::print(flow.out(), "{}\n",
                           wrapped(fmt::format("{} can't be used here; the storage is {}.", row.title,
                                               Supervisor::shared().storageEngineName()),
                                   flow.width()));
                break;
            case SettingsViewController::TapResult::Done:
            case SettingsViewController::TapResult::Asked:
                break;
        }
    }
}

std::string keptText(std::int32_t count) { return count == 0 ? "all" : std::to_string(count); }

// The main screen shows again: a flow that has loaded nothing yet (every scan was off)
// loads now, and one that has loaded reloads when what it would load changed; the main
// screen is drawn once that load has ended.
void showMainScreenAgain(TerminalFlow& flow, const SettingsViewController& settings,
                         const InAppSettingsViewController& switches) {
    MainViewController& controller = flow.controller();
    if (controller.isInitialState()) {
        controller.viewDidAppear();
    } else if (settings.storageChanged() || switches.scansChanged()) {
        controller.reloadAll();
    }
    flow.settle();
}

}  // namespace

void showSettingsScreen(TerminalFlow& flow) {
    if (flow.prompt() == nullptr) return;
    const auto settings = SettingsViewController::create();
    InAppSettingsViewController switches;
    while (true) {
        flow.settle();
        const std::vector<std::string> rows = {
            "Options: scans, dialogs, alerts, resets",
            fmt::format("Storage engine: {}", Supervisor::shared().storageEngineName()),
            fmt::format("Backups to keep: {}", keptText(settings->maximumBackupsToKeep())),
            "Calendar of backups",
        };
        const auto chosen = flow.prompt()->choose("\nSettings", rows);
        if (!chosen) break;
        // A reset ends the program once its alert, waiting on the main queue, is told.
        if (*chosen == 0 && showSwitchList(flow, switches)) {
            flow.settle();
            return;
        }
        if (*chosen == 1) showEngineRows(flow, *settings);
        if (*chosen == 2) settings->askMaximumBackupsToKeep();
        if (*chosen == 3) showBackupCalendar(flow);
    }
    settings->saveChanges();
    showMainScreenAgain(flow, *settings, switches);
}

}  // namespace stowhaven
