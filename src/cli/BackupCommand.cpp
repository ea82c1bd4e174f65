#include "cli/BackupCommand.h"

#include "backup/BackupOperation.h"
#include "cli/CatalogueLoad.h"
#include "cli/KeyFile.h"
#include "cli/OperationRun.h"
#include "cli/ProgressLine.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "platform/Terminal.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <atomic>

namespace stowhaven {

namespace {

// Whether a backup ended in failure: any failure notice, a cancel, or the run's session gone
// from the catalogue (as a store that failed takes it away) counts, whatever closing ran last.
class Outcome {
public:
    Outcome() {
        observer_ = NotificationCenter::defaultCenter().addObserver("BACKUP_FAILED", nullptr,
                                                                    [this](const Notification&) { failed_ = true; });
    }
    ~Outcome() { NotificationCenter::defaultCenter().removeObserver(observer_); }
    Outcome(const Outcome&) = delete;
    Outcome& operator=(const Outcome&) = delete;

    bool succeeded(const BackupOperation& run) const {
        const auto sessions = CydiaFileManager::shared().backupSessions();
        const bool kept = run.session() && std::find(sessions.begin(), sessions.end(), run.session()) != sessions.end();
        return kept && !failed_ && !Supervisor::shared().isCanceled() &&
               CydiaFileManager::shared().hasSuccessfullySaveData();
    }

private:
    std::atomic<bool> failed_{false};
    NotificationCenter::ObserverToken observer_{};
};

std::string failureReason() {
    const Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isCanceled()) return "it was canceled";
    if (supervisor.isStorageAddressbook()) {
        if (const auto message = CydiaFileManager::shared().errorMsg(); message && !message->empty()) return *message;
    } else if (const auto engine = supervisor.currentStorageEngine()) {
        if (const auto error = engine->errorMessage()) return *error;
    }
    return "the storage did not take it; the log has the details";
}

}  // namespace

int BackupCommand::run(const Request& request, std::ostream& out, std::ostream& errors) {
    if (!request.confirmed) {
        fmt::print(errors, "stowhaven: a backup starts only when confirmed: add --yes\n");
        return 2;
    }
    std::optional<std::string> key;
    if (request.keyFile) {
        key = keyFromFile(*request.keyFile);
        if (!key) {
            fmt::print(errors, "stowhaven: no key in <{}>\n", *request.keyFile);
            return 2;
        }
    }
    if (!loadCatalogue()) {
        fmt::print(errors, "stowhaven: the {} engine is not available in this build\n",
                   Supervisor::shared().storageEngineName());
        return 1;
    }
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    if (key) catalogue.setEncryptionKey(key);
    if (gEncryptBackupEnabled && !catalogue.encryptionKey()) {
        fmt::print(errors, "stowhaven: backups are to be encrypted, but no key was given: add --key-file FILE\n");
        return 2;
    }
    catalogue.setBackupTitle(request.title);
    catalogue.setBackupDescription(request.description);
    gIsBackupMode = true;

    // What the load had to say is no reason for this run's failure.
    catalogue.setErrorMsg(std::nullopt);
    const Outcome outcome;
    const auto run = std::make_shared<BackupOperation>();
    {
        const ProgressLine progress(errors, Terminal::isStandardErrorATerminal());
        runOperation(run);
    }
    if (!outcome.succeeded(*run)) {
        fmt::print(errors, "stowhaven: the backup failed: {}\n", failureReason());
        return 1;
    }
    fmt::print(out, "Backup done on {}: {}\n", Supervisor::shared().storageEngineName(),
               run->session()->sessionDate() ? run->session()->sessionDate()->description() : "");
    return 0;
}

}  // namespace stowhaven
