#pragma once

#include <atomic>
#include <string>

namespace stowhaven {

// The process-wide settings flags, mirrored from the settings at start and on each return
// to the foreground. Written on the main thread only, read from every thread.
extern std::atomic<bool> gSoundEnabled;
extern std::atomic<bool> gVibrateEnabled;
extern std::atomic<bool> gConfirmBackup;
extern std::atomic<bool> gConfirmRestore;
extern std::atomic<bool> gFreeSpaceCheckEnabled;
extern std::atomic<bool> gPkgFWCompatibilityCheckEnabled;
extern std::atomic<bool> gAutoScanPkgEnabled;
extern std::atomic<bool> gAutoScanAppStoreAppsEnabled;
extern std::atomic<bool> gAutoScanStockAppsEnabled;
extern std::atomic<bool> gAutoScanOtherOptionsEnabled;
extern std::atomic<bool> gAutoScanPhotosEnabled;
extern std::atomic<bool> gAutoScanVideosEnabled;
extern std::atomic<bool> gAutobackupEnabled;
extern std::atomic<bool> gICalIntegrationEnabled;
extern std::atomic<bool> gCloudStorageOnWifiOnly;
extern std::atomic<bool> gPluggedInDeviceOnly;
extern std::atomic<bool> gEncryptBackupEnabled;
extern std::atomic<bool> gUseSameEncryptionKeyEnabled;
extern std::atomic<bool> gBackupDebsEnabled;
extern std::atomic<bool> gRestoreFromDebsEnabled;
extern std::atomic<bool> gBackupDescriptionEnabled;
extern std::atomic<bool> gBackupTitleEnabled;

extern std::atomic<float> gMinDeviceBatteryLevel;
// This start came from a local notification.
extern std::atomic<bool> gLaunchedFromNotification;
// The program has come back to the foreground once.
extern std::atomic<bool> gWasForegrounded;
// The direction in which the user works: true backup, false restore.
extern std::atomic<bool> gIsBackupMode;

// The base folder of local storage; empty stands for nil.
std::string localStoragePath();
void setLocalStoragePath(std::string path);

}  // namespace stowhaven
