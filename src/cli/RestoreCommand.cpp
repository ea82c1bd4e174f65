#include "cli/RestoreCommand.h"

#include "cli/RestoreLog.h"
#include "cli/SessionName.h"
#include "cli/TerminalFlow.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "flows/MainAlerts.h"
#include "platform/Terminal.h"
#include "restore/RestoreSelection.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>

namespace stowhaven {

namespace {

// The session of that name among all of the storage's; nothing without one.
std::shared_ptr<BackupSession> sessionNamed(const std::string& name) {
    const Supervisor& supervisor = Supervisor::shared();
    if (const auto engine = supervisor.currentStorageEngine(); engine && !supervisor.isStorageAddressbook()) {
        engine->retrieveRestOfBackupHistory();
    }
    for (const auto& session : CydiaFileManager::shared().backupSessions()) {
        if (isNameOf(name, *session)) return session;
    }
    return nullptr;
}

// Whether the flow said so since ALERTSBEFORE: the catalogue's reload after a restore
// clears the cancel, its alert stays.
bool shownSince(TerminalFlow& flow, std::size_t alertsBefore, MainAlerts::Tag tag) {
    const auto& shown = flow.alerts().shown();
    return std::any_of(shown.begin() + static_cast<std::ptrdiff_t>(alertsBefore), shown.end(),
                       [tag](const auto& alert) { return alert.tag == tag; });
}

}  // namespace

int RestoreCommand::run(const Request& request, std::ostream& out, std::ostream& errors) {
    const auto presets = request.job.presets(errors);
    if (!presets) return 2;
    TerminalFlow flow(errors, {*presets, Terminal::isStandardInputATerminal(), true});
    if (!flow.appear()) return statusWithoutJob(flow, "restore", errors);
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    const std::string engineName = Supervisor::shared().storageEngineName();
    if (request.session) {
        const auto session = sessionNamed(*request.session);
        if (!session) {
            fmt::print(errors, "stowhaven: no session {} on {}\n", *request.session, engineName);
            return 2;
        }
        if (session != catalogue.currentBackupSession()) catalogue.changeCurrentBackupSessionTo(session);
    }
    const auto session = catalogue.currentBackupSession();
    if (!session) {
        fmt::print(errors, "stowhaven: there is no session to restore on {}\n", engineName);
        return 1;
    }
    flow.controller().configureUIRestoreMode();
    selectRestoreDefaults(*session);
    const std::size_t before = flow.alerts().shown().size();
    flow.controller().doOperation();
    flow.settle();
    const bool canceled = shownSince(flow, before, MainAlerts::kOperationCanceled);
    if (!canceled && !shownSince(flow, before, MainAlerts::kRestoreDone)) {
        return statusWithoutJob(flow, "restore", errors);
    }
    const bool allIn = printRestoreLog(request.logOf, out, errors);
    if (canceled) {
        fmt::print(errors, "stowhaven: the restore was canceled\n");
        return 130;
    }
    if (allIn) return 0;
    fmt::print(errors, "stowhaven: the restore failed for what the log marks \"failed\"\n");
    return 1;
}

}  // namespace stowhaven
