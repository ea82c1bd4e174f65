#include "core/ProcessFlags.h"

#include <mutex>

namespace stowhaven {

std::atomic<bool> gSoundEnabled{false};
std::atomic<bool> gVibrateEnabled{false};
std::atomic<bool> gConfirmBackup{false};
std::atomic<bool> gConfirmRestore{false};
std::atomic<bool> gFreeSpaceCheckEnabled{false};
std::atomic<bool> gPkgFWCompatibilityCheckEnabled{false};
std::atomic<bool> gAutoScanPkgEnabled{false};
std::atomic<bool> gAutoScanAppStoreAppsEnabled{false};
std::atomic<bool> gAutoScanStockAppsEnabled{false};
std::atomic<bool> gAutoScanOtherOptionsEnabled{false};
std::atomic<bool> gAutoScanPhotosEnabled{false};
std::atomic<bool> gAutoScanVideosEnabled{false};
std::atomic<bool> gAutobackupEnabled{false};
std::atomic<bool> gICalIntegrationEnabled{false};
std::atomic<bool> gCloudStorageOnWifiOnly{false};
std::atomic<bool> gPluggedInDeviceOnly{false};
std::atomic<bool> gEncryptBackupEnabled{false};
std::atomic<bool> gUseSameEncryptionKeyEnabled{false};
std::atomic<bool> gBackupDebsEnabled{false};
std::atomic<bool> gRestoreFromDebsEnabled{false};
std::atomic<bool> gBackupDescriptionEnabled{false};
std::atomic<bool> gBackupTitleEnabled{false};

std::atomic<float> gMinDeviceBatteryLevel{0.0f};
std::atomic<bool> gLaunchedFromNotification{false};
std::atomic<bool> gWasForegrounded{false};
std::atomic<bool> gIsBackupMode{true};

namespace {

std::mutex gLocalStoragePathMutex;
std::string gLocalStoragePath;

}  // namespace

std::string localStoragePath() {
    std::lock_guard lock(gLocalStoragePathMutex);
    return gLocalStoragePath;
}

void setLocalStoragePath(std::string path) {
    std::lock_guard lock(gLocalStoragePathMutex);
    gLocalStoragePath = std::move(path);
}

}  // namespace stowhaven
