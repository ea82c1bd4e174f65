#include "cli/HistoryTerminal.h"

#include "cli/HistoryCommandRun.h"
#include "cli/HistoryScreenState.h"
#include "cli/TerminalFlow.h"
#include "cli/TextWrap.h"
#include "core/Supervisor.h"
#include "flows/AvailableDeviceBackupController.h"
#include "flows/BackupSessionsViewController.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

namespace {

struct Action {
    std::string label;
    std::function<void()> run;
};

// The lines of the chosen row, each under the one before.
void showDetails(TerminalFlow& flow, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) fmt::print(flow.out(), "{}\n", wrappedBehind("    ", line, flow.width()));
}

// The action picked from ACTIONS runs; false when the user went back.
bool runChosen(TerminalPrompt& prompt, const std::vector<Action>& actions) {
    std::vector<std::string> labels;
    for (const Action& action : actions) labels.push_back(action.label);
    const auto chosen = prompt.choose("", labels, "Back");
    if (!chosen) return false;
    actions[*chosen].run();
    return true;
}

// Going back leaves the session to restore as it was: only "use" changes it.
void sessionActions(TerminalFlow& flow, BackupSessionsViewController& controller, const HistoryScreenState& state,
                    std::size_t row, const std::function<void()>& wait) {
    const auto selectedBefore = controller.selectedBackupSession();
    controller.selectRow(row);
    showDetails(flow, state.details);
    std::vector<Action> actions = {{"Use it for the next restore", [&controller] { controller.viewWillDisappear(); }},
                                   {"Delete it", [&controller, &wait] {
                                        controller.askToDeleteSelected();
                                        wait();
                                    }}};
    if (controller.canUploadToDropbox()) {
        actions.push_back({"Copy it to Dropbox", [&controller, &wait] {
                               controller.askToUploadToDropbox();
                               wait();
                           }});
    }
    if (runChosen(*flow.prompt(), actions)) return;
    const auto& sessions = controller.listBackupSessions();
    if (const auto found = std::find(sessions.begin(), sessions.end(), selectedBefore);
        selectedBefore && found != sessions.end()) {
        controller.selectRow(static_cast<std::size_t>(found - sessions.begin()));
    }
}

void deviceActions(TerminalFlow& flow, AvailableDeviceBackupController& controller, const std::function<void()>& wait) {
    const auto& dates = controller.backupDates();
    fmt::print(
        flow.out(), "{}\n",
        wrapped(fmt::format("{}: {} session(s)", controller.selectedDeviceBackup(), dates.size()), flow.width()));
    showDetails(flow, dates);
    std::vector<Action> actions = {{"Rename it",
                                    [&controller, &wait] {
                                        controller.askToRename();
                                        wait();
                                    }},
                                   {"Delete it", [&controller, &wait] {
                                        controller.askToDelete();
                                        wait();
                                    }}};
    if (controller.selectedDeviceBackup() != AvailableDeviceBackupController::thisDeviceBackupName()) {
        actions.push_back({"Use its backups for this device", [&controller, &wait] {
                               controller.useSelectedDeviceBackup();
                               wait();
                           }});
    }
    runChosen(*flow.prompt(), actions);
}

}  // namespace

// A session is picked from the list, then what to do with it; leaving the list makes the
// last one picked the session to restore.
void showBackupSessionsScreen(TerminalFlow& flow) {
    if (flow.prompt() == nullptr) return;
    const auto state = std::make_shared<HistoryScreenState>();
    const auto controller = BackupSessionsViewController::create(state);
    const std::function<void()> wait = [&controller] {
        waitUntilIdle([&controller] { return controller->isWaiting(); });
    };
    controller->viewDidAppear();
    wait();
    while (!state->closed && !flow.userLeft()) {
        std::vector<std::string> rows = state->rows;
        const auto& sessions = controller->listBackupSessions();
        for (std::size_t row = 0; row < rows.size() && row < sessions.size(); ++row) {
            if (sessions[row] == controller->selectedBackupSession()) rows[row] += "  (to restore)";
        }
        const auto title =
            fmt::format("\nBackups of this device on {}, newest first:", Supervisor::shared().storageEngineName());
        const auto chosen = flow.prompt()->choose(title, rows, "Back");
        if (!chosen) {
            controller->viewWillDisappear();
            break;
        }
        sessionActions(flow, *controller, *state, *chosen, wait);
    }
}

void showDeviceBackupsScreen(TerminalFlow& flow) {
    if (flow.prompt() == nullptr) return;
    const auto state = std::make_shared<HistoryScreenState>();
    const auto controller = AvailableDeviceBackupController::create(state);
    const std::function<void()> wait = [&controller] {
        waitUntilIdle([&controller] { return controller->isWaiting(); });
    };
    controller->viewDidAppear();
    wait();
    while (!state->closed && !flow.userLeft()) {
        const std::string own = AvailableDeviceBackupController::thisDeviceBackupName();
        std::vector<std::string> rows;
        for (const std::string& name : controller->deviceBackups()) {
            rows.push_back(name == own ? name + "  (this device)" : name);
        }
        const auto title = fmt::format("\nDevice backups on {}:", Supervisor::shared().storageEngineName());
        const auto chosen = flow.prompt()->choose(title, rows, "Back");
        if (!chosen) {
            controller->viewWillDisappear();
            break;
        }
        controller->selectDeviceBackup(controller->deviceBackups()[*chosen]);
        wait();
        deviceActions(flow, *controller, wait);
    }
}

}  // namespace stowhaven
