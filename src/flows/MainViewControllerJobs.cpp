#include "flows/MainViewController.h"

#include "backup/BackupOperation.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "flows/MainAlerts.h"
#include "flows/OperationRestrictions.h"
#include "platform/JobLock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Strings.h"
#include "platform/dispatch/MainQueue.h"
#include "restore/RestoreOperation.h"

#include <algorithm>

namespace stowhaven {

namespace {

void stopObserving(std::optional<NotificationCenter::ObserverToken>& observer) {
    if (!observer) return;
    NotificationCenter::defaultCenter().removeObserver(*observer);
    observer.reset();
}

}  // namespace

// A job that another program runs on the device is said before any question is asked.
bool MainViewController::hasOperationRestrictions() {
    auto restriction = operationRestriction();
    if (!restriction) restriction = JobLock::jobOfAnotherProcess();
    if (!restriction) return false;
    Supervisor::showAlert(Strings::localized("OPERATION_UNAVAILABLE_TITLE"), *restriction);
    return true;
}

bool MainViewController::networkEngineOffline() {
    return Supervisor::shared().isNetworkStorage() && !Platform::current().reachability().isConnectedToNetwork();
}

void MainViewController::doBackup() {
    Supervisor& supervisor = Supervisor::shared();
    if (!CydiaFileManager::shared().hasAnythingSelected()) {
        displayNothingToDoMessage();
        return;
    }
    supervisor.refreshFreeSpace();
    if (!supervisor.hasValidFreeSpace()) return;
    if (networkEngineOffline()) {
        supervisor.displayNoInternetConnectionMessage();
        return;
    }
    backupDoneObserver_ = NotificationCenter::defaultCenter().addObserver(
        "BACKUP_DONE", &MainQueue::shared(), [weak = weak_from_this()](const Notification&) {
            if (const auto self = weak.lock()) self->handleBackupDone();
        });
    startJob(std::make_shared<BackupOperation>());
}

void MainViewController::doRestore() {
    Supervisor& supervisor = Supervisor::shared();
    if (networkEngineOffline()) {
        supervisor.displayNoInternetConnectionMessage();
        return;
    }
    if (!CydiaFileManager::shared().hasAnythingSelected()) {
        displayNothingToDoMessage();
        return;
    }
    supervisor.refreshFreeSpace();
    if (!supervisor.hasValidFreeSpace()) return;
    startJob(std::make_shared<RestoreOperation>());
}

// Only one backup or restore runs on a device at a time, across programs: the job holds the
// lock from here to its end, which the job's queue marks by running one last operation
// that lets go of it.
void MainViewController::startJob(std::shared_ptr<Operation> job) {
    // The job before has told its end, and may still be clearing up after it under the lock:
    // it takes a moment, and needs nothing of this thread.
    if (jobQueue_) jobQueue_->waitUntilAllOperationsAreFinished();
    const char* kind = std::dynamic_pointer_cast<BackupOperation>(job) ? "backup" : "restore";
    std::string refusal;
    std::shared_ptr<JobLock> lock = JobLock::take(kind, Platform::current().clock().date(), refusal);
    if (!lock) {
        SH_LOG("No {} started: {}", kind, refusal);
        stopObserving(backupDoneObserver_);
        Supervisor::showAlert(Strings::localized("OPERATION_UNAVAILABLE_TITLE"), refusal);
        return;
    }
    working_ = true;
    screen_->showWorking(true);
    screen_->setJobButtonsEnabled(false);
    if (const auto engine = Supervisor::shared().currentStorageEngine()) engine->showProgressOnView();
    if (Supervisor::shared().isNetworkStorage()) screen_->showNetworkActivity(true);
    jobQueue_ = std::make_unique<OperationQueue>();
    jobQueue_->addOperation(std::move(job));
    jobQueue_->addOperation([lock]() mutable { lock.reset(); });
}

void MainViewController::resetOperationStatus() {
    working_ = false;
    screen_->showWorking(false);
    screen_->setJobButtonsEnabled(true);
}

void MainViewController::handleBackupDone() {
    Supervisor& supervisor = Supervisor::shared();
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    screen_->showNetworkActivity(false);
    resetOperationStatus();
    updateLabels();
    stopObserving(backupDoneObserver_);
    if (const auto engine = supervisor.currentStorageEngine()) engine->hideProgress();
    if (supervisor.isCanceled()) {
        ask(MainAlerts::fixed(MainAlerts::kOperationCanceled));
    } else if (catalogue.hasSuccessfullySaveData()) {
        ask(MainAlerts::backupDone(supervisor.isStorageAddressbook(), supervisor.storageEngineName()));
    } else {
        ask(MainAlerts::backupFailed(catalogue.errorMsg().value_or(""), supervisor.isStorageAddressbook(),
                                     supervisor.storageEngineName()));
        catalogue.setErrorMsg(std::nullopt);
    }
}

void MainViewController::handleRestoreDone() {
    Supervisor& supervisor = Supervisor::shared();
    onMainQueue([](MainViewController& self) {
        self.screen_->showNetworkActivity(false);
        self.resetOperationStatus();
        self.updateLabels();
    });
    if (const auto engine = supervisor.currentStorageEngine()) engine->hideProgress();
    // A canceled restore is not complete: no reboot is offered and no date is kept for it.
    if (supervisor.isCanceled()) {
        ask(MainAlerts::fixed(MainAlerts::kOperationCanceled));
        return;
    }
    supervisor.lowLevelStorePreferencesData(Platform::current().clock().date(), "LAST_RESTORE_DATE");
    const auto packages = CydiaFileManager::shared().oldPackages();
    const bool anyRestored =
        std::any_of(packages.begin(), packages.end(), [](const auto& package) { return package->isRestoreSelected(); });
    ask(MainAlerts::restoreDone(anyRestored));
}

void MainViewController::handleDataImported(const std::shared_ptr<BackupSession>& session) {
    const std::string date = session->sessionDate() ? gDateFormatter.stringFromDate(*session->sessionDate()) : "";
    ask({.title = Strings::format("BACKUP_OF_DATE", date),
         .message = fmt::format("Successfully imported {} packages", session->nbPackages()),
         .buttons = {Strings::localized("OK_BUTTON")}});
}

void MainViewController::handleReloadDataNeeded() {
    SH_LOG("Will Reload data...");
    onMainQueue([](MainViewController& self) {
        self.updateStorageIcon();
        self.updateLabels();
    });
}

}  // namespace stowhaven
