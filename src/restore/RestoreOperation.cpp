#include "restore/RestoreOperation.h"

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Strings.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "platform/dispatch/OperationQueue.h"
#include "restore/AppStoreAppsRestoreOperation.h"
#include "restore/ArchivableFolderRestoreOperation.h"
#include "restore/IndexedDataRestoreOperation.h"
#include "restore/PackagesRestoreOperation.h"
#include "restore/RestoreCommands.h"
#include "restore/RestoreReport.h"
#include "restore/SourcesRestoreOperation.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

constexpr const char* kPackageManagerCleanUp =
    "apt-get purge; apt-get autoremove; apt-get check; apt-get clean; apt-get autoclean";

// The folders given back to the user "mobile" after every restore, whatever it held; the
// repeats are the program's own.
const std::vector<std::vector<std::string>> kMobileFolders = {
    {"/var/mobile/Library/Calendar"},
    {"/var/mobile/Library/SMS"},
    {"/var/mobile/Library/AddressBook"},
    {"/var/mobile/Library/Health"},
    {"/var/mobile/Library/Maps"},
    {"/var/mobile/Library/Notes"},
    {"/var/mobile/Media/DCIM", "/var/mobile/Media/PhotoData"},
    {"/var/mobile/Media/DCIM"},
    {"/var/mobile/Library/Notes"},
    {"/var/mobile/Library/Safari"},
    {"/var/mobile/Media/SHSH"},
    {"/var/mobile/Library/Keyboard/UserDictionaryWordKeyPairs.plist"},
    {"/var/mobile/Library/Keyboard/CoreDataUbiquitySupport"},
    {"/var/mobile/Library/Keyboard/UserDictionary.sqlite"},
};

double now() { return Platform::current().clock().date().timeIntervalSinceReferenceDate(); }

}  // namespace

std::vector<std::shared_ptr<DataRestoreOperation>> RestoreOperation::restoreOperationsFor(
    const BackupSession& session) {
    std::vector<std::shared_ptr<DataRestoreOperation>> operations = {std::make_shared<SourcesRestoreOperation>(),
                                                                     std::make_shared<PackagesRestoreOperation>()};
    if (!Supervisor::shared().isCloudStorage()) return operations;
    if (session.hasAppDataIndexed()) operations.push_back(std::make_shared<IndexedDataRestoreOperation>());
    operations.push_back(std::make_shared<AppStoreAppsRestoreOperation>());
    operations.push_back(std::make_shared<ArchivableFolderRestoreOperation>());
    return operations;
}

void RestoreOperation::main() {
    Supervisor& supervisor = Supervisor::shared();
    setName("RestoreOperation");
    backupSession_ = CydiaFileManager::shared().currentBackupSession();
    fIsFinished_ = false;
    timing_ = now();
    supervisor.resetCancelStatus();
    RestoreReport::shared().clear();
    supervisor.notifyProgress(0.0, std::string());
    const auto engine = supervisor.currentStorageEngine();

    if (backupSession_) {
        if (supervisor.isCloudStorage() && backupSession_->sessionDate()) {
            if (auto* preloading = answersTo<FileRefPreloading>(engine)) {
                supervisor.notifyProgress(std::nullopt,
                                          fmt::format("{} {}...", Strings::localized("CLOUD_PREPARE_RESTORE"),
                                                      supervisor.storageEngineName()));
                preloading->preloadFileRefUsingDate(*backupSession_->sessionDate());
            }
        }
        OperationQueue queue;
        const auto canceled = NotificationCenter::defaultCenter().addObserver(
            "OPERATION_CANCELED", &MainQueue::shared(), [&queue](const Notification&) { queue.cancelAllOperations(); });
        std::vector<std::shared_ptr<Operation>> operations;
        for (auto& operation : restoreOperationsFor(*backupSession_)) operations.push_back(std::move(operation));
        queue.addOperations(operations, true);
        NotificationCenter::defaultCenter().removeObserver(canceled);
    } else {
        SH_LOG("No session to restore!");
    }

    supervisor.notifyProgress(std::nullopt, Strings::localized("CLEANING_UP_MESSAGE") + "...");
    CydiaFileManager::shared().startPackageManagerCleanUp(kPackageManagerCleanUp);
    timing_ = now() - timing_;
    SH_LOG("Took: {:f}s", timing_);
    supervisor.backupOrRestoreDone();
    supervisor.notifyProgress(1.0, Strings::localized("DONE_MESSAGE"));
    MainQueue::shared().async([] { NotificationCenter::defaultCenter().post("RESTORE_DONE"); });
    finish();
}

void RestoreOperation::finish() {
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isCloudStorage()) {
        if (const auto engine = supervisor.currentStorageEngine()) engine->setSuccessSelector(nullptr, nullptr);
    }
    for (const auto& folders : kMobileFolders) supervisor.systemExecute(RestoreCommands::giveToMobile(folders));
    supervisor.removeTemporaryFiles();
    supervisor.removeTemporaryFolders();
    fIsFinished_ = true;
}

}  // namespace stowhaven
