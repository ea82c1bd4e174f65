#include "backup/BackupOperation.h"

#include "backup/AppStoreAppBackupOperation.h"
#include "backup/ApplicationsDataOperation.h"
#include "backup/ArchivableFolderBackupOperation.h"
#include "backup/DebsBackupOperation.h"
#include "backup/MediaBackupOperation.h"
#include "backup/PreferenceFilesBackupOperation.h"
#include "backup/StockDataBackupOperations.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Strings.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "platform/dispatch/OperationQueue.h"
#include "storage/AbstractStorageHelper.h"
#include "storage/StorageLayout.h"

#include <algorithm>
#include <mutex>

namespace stowhaven {

namespace {

std::mutex gLeftBehindMutex;
std::vector<NotificationCenter::ObserverToken> gLeftBehindObservers;

double now() { return Platform::current().clock().date().timeIntervalSinceReferenceDate(); }

void postBackupDone() {
    MainQueue::shared().async([] { NotificationCenter::defaultCenter().post("BACKUP_DONE"); });
}

// The requests of the current engine that have failed so far; every file and folder of a
// session is one. Nothing for an engine that keeps no count (the address book).
AbstractStorageHelper::FailedRequests failedStorageRequests() {
    const auto engine = std::dynamic_pointer_cast<AbstractStorageHelper>(Supervisor::shared().currentStorageEngine());
    return engine ? engine->failedRequests() : AbstractStorageHelper::FailedRequests{};
}

}  // namespace

std::vector<std::shared_ptr<DataBackupOperation>> BackupOperation::dataOperationsFor(const BackupSession& session) {
    std::vector<std::shared_ptr<DataBackupOperation>> operations;
    const bool hasApplications = session.applications() && !session.applications()->empty();
    const bool hasFolders = session.archivableFolders() && !session.archivableFolders()->empty() &&
                            session.hasAnyArchivableFolderSelected();
    if (hasApplications || hasFolders) operations.push_back(std::make_shared<CreateApplicationDataFolderOperation>());
    operations.push_back(std::make_shared<DebsBackupOperation>());
    operations.push_back(std::make_shared<PreferencesFileBackupOperation>());
    operations.push_back(std::make_shared<SpringboardFileBackupOperation>());
    operations.push_back(std::make_shared<CalendarBackupOperation>());
    operations.push_back(std::make_shared<ContactsBackupOperation>());
    operations.push_back(std::make_shared<HealthBackupOperation>());
    operations.push_back(std::make_shared<MapsBackupOperation>());
    operations.push_back(std::make_shared<MessagesBackupOperation>());
    operations.push_back(std::make_shared<NotesBackupOperation>());
    operations.push_back(std::make_shared<PhoneBackupOperation>());
    operations.push_back(std::make_shared<SafariBackupOperation>());
    operations.push_back(std::make_shared<PhotosBackupOperation>());
    operations.push_back(std::make_shared<VideosBackupOperation>());
    operations.push_back(std::make_shared<AppStoreAppBackupOperation>());
    operations.push_back(std::make_shared<ArchivableFolderBackupOperation>());
    return operations;
}

void BackupOperation::removeLeftBehindObserversForTesting() {
    std::lock_guard lock(gLeftBehindMutex);
    for (const auto token : gLeftBehindObservers) NotificationCenter::defaultCenter().removeObserver(token);
    gLeftBehindObservers.clear();
}

void BackupOperation::observeClosingNotices() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    const auto self = shared_from_this();
    std::lock_guard lock(gLeftBehindMutex);
    gLeftBehindObservers.push_back(center.addObserver("BACKUP_FAILED", &MainQueue::shared(),
                                                      [self](const Notification&) { self->backupFailed(); }));
    gLeftBehindObservers.push_back(center.addObserver("BACKUP_SUCCEEDED", &MainQueue::shared(),
                                                      [self](const Notification&) { self->backupSucceeded(); }));
    gLeftBehindObservers.push_back(center.addObserver("PROGRESS_CANCELED", &MainQueue::shared(),
                                                      [self](const Notification&) { self->canceled(); }));
}

void BackupOperation::canceled() {
    if (!running_) backupFailed();
}

void BackupOperation::main() {
    SH_LOG("Starting on {}...", Supervisor::shared().storageEngineName());
    setName("BackupOperation");
    timing_ = now();
    observeClosingNotices();
    running_ = true;
    run();
    running_ = false;
}

void BackupOperation::run() {
    Supervisor& supervisor = Supervisor::shared();
    CydiaFileManager& manager = CydiaFileManager::shared();
    supervisor.resetCancelStatus();
    supervisor.notifyProgress(std::nullopt, Strings::localized("PROCESSING_SELECTED_PACKAGES"));

    // The record goes to the storage before any bulk data does.
    manager.resetOldData();
    session_ = manager.createBackupSession(true);
    const std::uint64_t failedBefore = failedStorageRequests().count;
    manager.storeBackupData();
    timing_ = now() - timing_;
    SH_LOG("Took: {:f}s", timing_);

    // A record the storage refused ends the run here, with its message left for the alert:
    // on the address book the record is the whole backup, and on a file engine no data
    // goes after a history that isn't there.
    if (!manager.hasSuccessfullySaveData() || supervisor.isCanceled()) {
        backupFailed();
        return;
    }
    if (supervisor.isCloudStorage()) {
        const bool ran = runDataOperations() && !supervisor.isCanceled();
        // A part, an index or a folder that the engine couldn't store fails the backup: a
        // session missing some of its data is no backup to keep, nor to roll over for.
        const auto failed = failedStorageRequests();
        if (failed.count > failedBefore) {
            manager.setErrorMsg(failed.lastError.value_or("Some of the data couldn't be stored!"));
        }
        if (!ran || failed.count > failedBefore) {
            backupFailed();
            return;
        }
        supervisor.notifyProgress(1.0, Strings::localized("CLOUD_BACKUP_UPLOADED"));
    }
    backupSucceeded();
    postBackupDone();
    SH_LOG("Done.");
}

bool BackupOperation::runDataOperations() {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.removeTemporaryFiles();
    supervisor.removeTemporaryFolders();
    OperationQueue queue;
    const auto canceled = NotificationCenter::defaultCenter().addObserver(
        "OPERATION_CANCELED", &MainQueue::shared(), [&queue](const Notification&) { queue.cancelAllOperations(); });

    const auto sessions = CydiaFileManager::shared().backupSessions();
    const auto dataOperations =
        sessions.empty() ? std::vector<std::shared_ptr<DataBackupOperation>>{} : dataOperationsFor(*sessions.back());
    queue.addOperations({dataOperations.begin(), dataOperations.end()}, true);
    supervisor.removeTemporaryFiles();
    supervisor.removeTemporaryFolders();
    NotificationCenter::defaultCenter().removeObserver(canceled);

    // A kind whose tool left less than a whole result fails the backup with its word. (What
    // the operations write in their texts is not read: the package capture writes there
    // what apt-get said of every package.)
    for (const auto& operation : dataOperations) {
        if (const auto failure = operation->failure()) {
            CydiaFileManager::shared().setErrorMsg(*failure);
            return false;
        }
    }
    return true;
}

bool BackupOperation::sessionIsStored() const {
    const auto sessions = CydiaFileManager::shared().backupSessions();
    if (!session_ || std::find(sessions.begin(), sessions.end(), session_) == sessions.end()) return false;
    Supervisor& supervisor = Supervisor::shared();
    const auto engine = supervisor.currentStorageEngine();
    if (supervisor.isStorageAddressbook() || !engine) return true;
    const auto listed = engine->existingFiles();
    const auto date = session_->sessionDate();
    return date && std::find(listed.begin(), listed.end(), StorageLayout::historyFileName(*date)) != listed.end();
}

// Only a run whose session stands stored closes with success: after a failed store the
// rollover would count the sessions to keep without the new one and delete a good one.
void BackupOperation::backupSucceeded() {
    Supervisor& supervisor = Supervisor::shared();
    CydiaFileManager& manager = CydiaFileManager::shared();
    if (!sessionIsStored()) {
        SH_LOG("The session isn't stored: no rollover.");
        return;
    }
    succeeded_ = true;
    manager.setFSaveDataOk(true);
    SH_LOG("Upload succeeded!");
    supervisor.logMemoryUsage();
    const auto engine = supervisor.currentStorageEngine();
    if (engine) {
        engine->setSuccessSelector(nullptr, nullptr);
        engine->refreshFreeSpace();
    }
    supervisor.backupOrRestoreDone();
    manager.rolloverBackups();
    if (auto* details = answersTo<DefaultBackupDetailsLoading>(engine)) details->loadDefaultBackupDetails();
    supervisor.notifyProgress(std::nullopt, Strings::localized("UPDATING_RESTORABLE_BACKUP") + "...");
    const auto sessions = manager.backupSessions();
    if (!sessions.empty()) manager.changeCurrentBackupSessionTo(sessions.back());
    supervisor.notifyProgress(1.0, Strings::localized("DONE_MESSAGE"));
}

void BackupOperation::backupFailed() {
    Supervisor& supervisor = Supervisor::shared();
    CydiaFileManager& manager = CydiaFileManager::shared();
    manager.setFSaveDataOk(false);
    SH_LOG("{} failed!", name());
    const auto engine = supervisor.currentStorageEngine();
    if (engine) {
        engine->setSuccessSelector(nullptr, nullptr);
        engine->refreshFreeSpace();
    }
    supervisor.logMemoryUsage();
    if (gIsBackupMode) {
        if (auto* details = answersTo<DefaultBackupDetailsLoading>(engine)) details->loadDefaultBackupDetails();
        // Only this run's own record goes, and only while it is the newest and the run hasn't
        // closed with success: a second closing, or a later run's notice, must not take an
        // older backup with it.
        const auto sessions = manager.backupSessions();
        if (!succeeded_ && supervisor.isStorageSameAsDefault() && !sessions.empty() && sessions.back() == session_) {
            manager.deleteBackupSession(session_);
            if (supervisor.isCloudStorage() && engine) engine->deleteBackupSession(session_);
        }
    }
    const char* key = supervisor.isCanceled() ? "OPERATION_CANCELED_MESSAGE"
                      : gIsBackupMode         ? "CLOUD_UPLOAD_FAILED"
                                              : "RESTORE_FAILED";
    supervisor.notifyProgress(1.0, Strings::localized(key));
    postBackupDone();
}

}  // namespace stowhaven
