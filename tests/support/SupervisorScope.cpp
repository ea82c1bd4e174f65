#include "support/SupervisorScope.h"

#include "backup/BackupOperation.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "items/ArchivableFolders.h"
#include "items/SelectionDefaults.h"
#include "platform/dispatch/MainQueue.h"
#include "storage/StorageEngines.h"

#include <array>
#include <filesystem>
#include <fstream>

namespace stowhaven::test {

namespace {

// The flags the Supervisor and the catalogue read, each with its value at a first launch.
const std::array<std::pair<std::atomic<bool>*, bool>, SupervisorScope::kFirstLaunchFlagCount> kFirstLaunchFlags = {{
    {&gIsBackupMode, true},
    {&gFreeSpaceCheckEnabled, true},
    {&gSoundEnabled, false},
    {&gVibrateEnabled, false},
    {&gICalIntegrationEnabled, false},
    {&gAutoScanPkgEnabled, false},
    {&gAutoScanAppStoreAppsEnabled, false},
    {&gAutoScanStockAppsEnabled, false},
    {&gAutoScanOtherOptionsEnabled, false},
    {&gAutoScanPhotosEnabled, false},
    {&gAutoScanVideosEnabled, false},
    {&gAutobackupEnabled, false},
    {&gEncryptBackupEnabled, false},
    {&gUseSameEncryptionKeyEnabled, false},
    {&gBackupDebsEnabled, false},
    {&gRestoreFromDebsEnabled, false},
    {&gConfirmBackup, true},
    {&gConfirmRestore, true},
    {&gPkgFWCompatibilityCheckEnabled, true},
    {&gBackupTitleEnabled, true},
    {&gBackupDescriptionEnabled, true},
    {&gPluggedInDeviceOnly, false},
    {&gCloudStorageOnWifiOnly, false},
    {&gLaunchedFromNotification, false},
    {&gWasForegrounded, false},
}};

}  // namespace

void SupervisorScope::startAsAFirstLaunch() {
    CydiaFileManager::resetForTesting();
    Supervisor::resetForTesting();
    StorageEngines::removeAllForTesting();
    MainQueue::shared().bindToCurrentThread();
    DefaultList::reloadAllOnNextUse();
    for (std::size_t index = 0; index < kFirstLaunchFlags.size(); ++index) {
        savedFlags_[index] = kFirstLaunchFlags[index].first->exchange(kFirstLaunchFlags[index].second);
    }
    // No folder has been looked at yet; with the scan off this makes no Supervisor.
    ArchivableFolders::resetFolder();
}

const DeviceFacts SupervisorScope::kPinnedDevice{"0123456789abcdef0123456789abcdef01234567", "Ann's iPhone",
                                                 "iPhone7,2", "8.1.2"};

SupervisorScope::SupervisorScope() : folder_(std::in_place), root_(folder_->path().string()), rootScope_(root_) {
    DeviceFactsReader::pin(kPinnedDevice);
    startAsAFirstLaunch();
}

SupervisorScope::SupervisorScope(const std::string& root) : root_(root), rootScope_(root_) { startAsAFirstLaunch(); }

SupervisorScope::~SupervisorScope() {
    // A backup's observers outlive it on purpose; the next test's notices must not reach them.
    BackupOperation::removeLeftBehindObserversForTesting();
    // Blocks still waiting would reach the Supervisor after it is gone.
    serveMainQueue();
    CydiaFileManager::resetForTesting();
    Supervisor::resetForTesting();
    StorageEngines::removeAllForTesting();
    DeviceFactsReader::pin(std::nullopt);
    for (std::size_t index = 0; index < kFirstLaunchFlags.size(); ++index) {
        kFirstLaunchFlags[index].first->store(savedFlags_[index]);
    }
}

void SupervisorScope::makeFile(const std::string& devicePath) const {
    const std::filesystem::path file = path(devicePath);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream{file};
}

void SupervisorScope::restartSupervisor() {
    serveMainQueue();
    Supervisor::resetForTesting();
}

void SupervisorScope::serveMainQueue() {
    while (MainQueue::shared().runOnce() > 0) {
    }
}

}  // namespace stowhaven::test
