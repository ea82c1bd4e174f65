#include "cli/InteractiveSession.h"

#include "cli/EngineChoice.h"
#include "cli/HistoryTerminal.h"
#include "cli/RestoreLog.h"
#include "cli/SelectionTerminal.h"
#include "cli/SettingsTerminal.h"
#include "cli/ShareTerminal.h"
#include "cli/TerminalFlow.h"
#include "cli/TextWrap.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "flows/MainLabels.h"
#include "platform/Terminal.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

namespace {

struct MenuItem {
    std::string label;
    std::function<void()> action;
};

// A text of its own, wrapped to the terminal.
void say(TerminalFlow& flow, std::string_view text) { fmt::print(flow.out(), "{}\n", wrapped(text, flow.width())); }

void drawMainScreen(TerminalFlow& flow) {
    const Supervisor& supervisor = Supervisor::shared();
    const TerminalScreen& screen = flow.screen();
    const MainScreen::Labels& labels = screen.labels();
    // A label's text stands in a column of its own, its further lines under its first.
    const auto labelled = [&flow](std::string_view label, std::string_view text) {
        fmt::print(flow.out(), "{}\n", wrappedBehind(fmt::format("{:<14}", label), text, flow.width()));
    };
    fmt::print(flow.out(), "\n");
    say(flow, fmt::format("Stowhaven {} - {} ({}, {})", supervisor.version(), supervisor.deviceName(),
                          supervisor.devicePlatform(), supervisor.deviceSystemVersion()));
    say(flow, fmt::format("Mode: {:<10} Storage: {}", screen.backupMode() ? "backup" : "restore",
                          supervisor.storageEngineName()));
    labelled(screen.backupMode() ? "Last backup:" : "Last restore:", labels.title);
    for (const std::string& text : {labels.description, labels.date, labels.size}) labelled("", text);
    if (!screen.backupMode()) {
        if (const auto session = CydiaFileManager::shared().currentBackupSession(); session && session->sessionDate()) {
            labelled("To restore:", fmt::format("{} of {}", session->title().value_or("-"),
                                                gDisplayDateFormatter.stringFromDate(*session->sessionDate())));
        }
    }
}

// The screens the flow opened, each used and left in turn.
void showOpenedScreens(TerminalFlow& flow) {
    for (const FlowScreen screen : flow.screen().takeOpenedScreens()) {
        switch (screen) {
            case FlowScreen::Settings:
                showSettingsScreen(flow);
                break;
            case FlowScreen::RestoreLog:
                printRestoreLog(std::nullopt, flow.out(), flow.out());
                break;
            case FlowScreen::DeviceBackups:
                showBackupSessionsScreen(flow);
                break;
            case FlowScreen::OtherDeviceBackups:
                showDeviceBackupsScreen(flow);
                break;
            case FlowScreen::AppStoreSelection:
            case FlowScreen::PackageSelection:
            case FlowScreen::FilesSelection:
            case FlowScreen::OtherSelection:
                showSelectionScreen(flow, screen);
                break;
        }
    }
}

std::vector<MenuItem> menuOf(TerminalFlow& flow) {
    MainViewController& controller = flow.controller();
    const bool backupMode = flow.screen().backupMode();
    std::vector<MenuItem> items;
    if (flow.screen().jobButtonsEnabled()) {
        items.push_back({backupMode ? "Back up now" : "Restore now", [&controller] { controller.doOperation(); }});
    }
    if (backupMode) {
        items.push_back({"Switch to restore", [&controller] { controller.configureUIRestoreMode(); }});
    } else {
        items.push_back({"Switch to backup", [&controller] { controller.configureUIBackupMode(); }});
        items.push_back({"Backups on this storage", [&controller] { controller.storageButtonClicked(); }});
        items.push_back(
            {"Log of the last restore", [&flow] { printRestoreLog(std::nullopt, flow.out(), flow.out()); }});
    }
    items.push_back({backupMode ? "Choose what to back up" : "Choose what to restore", [&controller, backupMode] {
                         backupMode ? controller.showBackupDataConfiguration()
                                    : controller.showRestoreDataConfiguration();
                     }});
    items.push_back({"Storage engine", [&flow] {
                         if (chooseStorageEngine(*flow.prompt(), flow.out())) flow.controller().reloadAll();
                     }});
    items.push_back({"Share", [&flow] { showShareMenu(flow); }});
    items.push_back({"Settings", [&controller] { controller.showSettings(); }});
    return items;
}

}  // namespace

int InteractiveSession::start(std::ostream& out) {
    TerminalFlow flow(out, {PresetAnswers{}, true, false});
    flow.appear();
    return run(flow);
}

int InteractiveSession::run(TerminalFlow& flow) {
    while (true) {
        flow.settle();
        showOpenedScreens(flow);
        if (flow.userLeft()) return 130;
        drawMainScreen(flow);
        const std::vector<MenuItem> items = menuOf(flow);
        std::vector<std::string> labels;
        for (const MenuItem& item : items) labels.push_back(item.label);
        const auto chosen = flow.prompt()->choose("", labels, "Quit");
        if (!chosen) return 0;
        items[*chosen].action();
    }
}

}  // namespace stowhaven
