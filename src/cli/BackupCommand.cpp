#include "cli/BackupCommand.h"

#include "backup/PackageRepackReport.h"
#include "cli/TerminalFlow.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "flows/MainAlerts.h"
#include "platform/Terminal.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

int BackupCommand::run(const JobRequest& request, std::ostream& out, std::ostream& errors) {
    const auto presets = request.presets(errors);
    if (!presets) return 2;
    TerminalFlow flow(errors, {*presets, Terminal::isStandardInputATerminal(), true});
    if (!flow.appear()) return statusWithoutJob(flow, "backup", errors);
    const std::size_t before = flow.alerts().shown().size();
    flow.controller().doOperation();
    flow.settle();
    return outcome(flow, before, out, errors);
}

int BackupCommand::outcome(TerminalFlow& flow, std::size_t alertsBefore, std::ostream& out, std::ostream& errors) {
    const auto& shown = flow.alerts().shown();
    const std::vector<std::string> repacked = PackageRepackReport::take();
    for (std::size_t index = shown.size(); index > alertsBefore; --index) {
        const TerminalAlerts::Shown& alert = shown[index - 1];
        if (alert.tag == MainAlerts::kBackupDone) {
            const auto sessions = CydiaFileManager::shared().backupSessions();
            const auto date = sessions.empty() ? std::nullopt : sessions.back()->sessionDate();
            fmt::print(out, "Backup done on {}: {}\n", Supervisor::shared().storageEngineName(),
                       date ? StorageLayout::stamp(*date) : "");
            for (const std::string& line : repacked) fmt::print(out, "{}\n", line);
            return 0;
        }
        if (alert.tag == MainAlerts::kBackupFailed) {
            fmt::print(errors, "stowhaven: the backup failed: {}\n", alert.message);
            return 1;
        }
        if (alert.tag == MainAlerts::kOperationCanceled) {
            fmt::print(errors, "stowhaven: the backup was canceled\n");
            return 130;
        }
    }
    return statusWithoutJob(flow, "backup", errors);
}

}  // namespace stowhaven
