#include "support/SupervisorScope.h"

#include "backup/BackupOperation.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/SettingsKeys.h"
#include "items/ArchivableFolders.h"
#include "items/SelectionDefaults.h"
#include "platform/dispatch/MainQueue.h"
#include "storage/StorageEngines.h"

#include <filesystem>
#include <fstream>

namespace stowhaven::test {

namespace {

// The flags the Supervisor and the catalogue read, each with its value at a first launch:
// the state of the run, and every setting's flag at the setting's registered default, but
// for the sound and the vibration, which a test's device goes without.
const std::vector<std::pair<std::atomic<bool>*, bool>>& firstLaunchFlags() {
    static const auto flags = [] {
        std::vector<std::pair<std::atomic<bool>*, bool>> run = {
            {&gIsBackupMode, true}, {&gLaunchedFromNotification, false}, {&gWasForegrounded, false}};
        for (const SettingKey& key : SettingsKeys::all()) {
            if (!key.flag) continue;
            const bool quiet = key.flag == &gSoundEnabled || key.flag == &gVibrateEnabled;
            run.emplace_back(key.flag, !quiet && key.defaultValue.asBoolean().value_or(false));
        }
        return run;
    }();
    return flags;
}

}  // namespace

void SupervisorScope::startAsAFirstLaunch() {
    CydiaFileManager::resetForTesting();
    Supervisor::resetForTesting();
    StorageEngines::removeAllForTesting();
    MainQueue::shared().bindToCurrentThread();
    DefaultList::reloadAllOnNextUse();
    for (const auto& [flag, atFirstLaunch] : firstLaunchFlags()) savedFlags_.push_back(flag->exchange(atFirstLaunch));
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
    for (std::size_t index = 0; index < savedFlags_.size(); ++index) {
        firstLaunchFlags()[index].first->store(savedFlags_[index]);
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
