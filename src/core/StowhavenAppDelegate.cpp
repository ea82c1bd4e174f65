#include "core/StowhavenAppDelegate.h"

#include "core/DataToImport.h"
#include "core/NetworkMtu.h"
#include "core/ProcessFlags.h"
#include "core/SettingsKeys.h"
#include "core/Supervisor.h"
#include "items/PhotoVideoManager.h"
#include "platform/ApplicationNotifications.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ProcessControl.h"
#include "platform/TemporaryDirectory.h"
#include "platform/UserDefaults.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/addressbook/ABAddressBookHelper.h"
#include "storage/local/LocalStorageHelper.h"

#include <limits>
#include <memory>
#include <mutex>

namespace stowhaven {

namespace {

constexpr const char* kDefaultDropboxStoragePath = "/Stowhaven";
// A terminal program is never hurried out by the system.
constexpr double kBackgroundTimeRemaining = std::numeric_limits<double>::infinity();

std::mutex gStartupSweepMutex;
std::shared_future<void> gStartupSweep;

// The links into the mobile user's contacts and media live while the program is in front.
void removeSymlinks() {
    ABAddressBookHelper::removeSymlink();
    PhotoVideoManager::removeSymlink();
}

void sweepTemporaryItems() {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.removeTemporaryFiles();
    supervisor.removeTemporaryFolders();
}

void readMinDeviceBatteryLevel(const Supervisor& supervisor, Battery& battery) {
    const double level = supervisor.lowLevelGetNumberPreferencesDataForKey("MinDeviceBatteryLevel")
                             .value_or(0.0)
                             .numberAsReal()
                             .value_or(0.0);
    if (level >= 0 && level <= 1) {
        gMinDeviceBatteryLevel = static_cast<float>(level);
    } else {
        gMinDeviceBatteryLevel = 0;
        battery.setMonitoringEnabled(false);
    }
    SH_LOG("Backup/restore when wifi: {:d}", gCloudStorageOnWifiOnly.load());
    SH_LOG("Backup/restore when powered: {:d} - MIN.power:{:.2f} | battery state:{} - level:{:.2f}",
           gPluggedInDeviceOnly.load(), gMinDeviceBatteryLevel.load(), static_cast<long>(battery.state()),
           battery.level());
}

// Both keys have registered defaults: this only matters if they were not registered.
void askForDescriptionAndTitleUnlessTurnedOff(Supervisor& supervisor) {
    for (const char* name : {"BackupDescriptionEnabled", "BackupTitleEnabled"}) {
        if (supervisor.lowLevelGetBooleanPreferencesDataForKey(name) || supervisor.lowLevelKeyExists(name)) continue;
        supervisor.lowLevelStorePreferencesData(true, name);
        SettingsKeys::find(name)->flag->store(true);
    }
}

void storeDropboxStoragePathIfAbsent(Supervisor& supervisor) {
    const auto path = supervisor.lowLevelGetStringPreferencesDataForKey("DropboxStoragePath");
    SH_LOG("DropboxStoragePath: {}", path.value_or("(null)"));
    if (!path) supervisor.lowLevelStorePreferencesData(kDefaultDropboxStoragePath, "DropboxStoragePath");
}

}  // namespace

void StowhavenAppDelegate::initialize() {
    SH_LOG("Initialize....");
    // Before the supervisor sweeps it and before any tool runs in it: a temporary folder that
    // another user or a link put in place is moved aside and made again.
    TemporaryDirectory::prepare();
    // Its reset ends the process the way every other end does.
    Supervisor::shared().setExitHandler(ProcessControl::exit);
    removeSymlinks();
    setupUserDefaults();
    const Reachability& reachability = Platform::current().reachability();
    SH_LOG("Using 3G: {:d}", reachability.isConnectedToNetwork() && !reachability.usingWiFi());
    refreshPreferences();

    auto swept = std::make_shared<std::promise<void>>();
    {
        std::lock_guard lock(gStartupSweepMutex);
        gStartupSweep = swept->get_future().share();
    }
    GlobalQueue::get(GlobalQueue::Priority::Background).async([swept] {
        sweepTemporaryItems();
        swept->set_value();
    });
}

void StowhavenAppDelegate::setupUserDefaults() {
    UserDefaults::standard().registerDefaults(SettingsKeys::registeredDefaults());
}

void StowhavenAppDelegate::refreshPreferences() {
    Battery& battery = Platform::current().battery();
    battery.setMonitoringEnabled(true);
    limitNetworkMtu();

    Supervisor& supervisor = Supervisor::shared();
    for (const SettingKey& key : SettingsKeys::all()) {
        if (key.flag != nullptr) key.flag->store(supervisor.lowLevelGetBooleanPreferencesDataForKey(key.name));
    }
    readMinDeviceBatteryLevel(supervisor, battery);
    askForDescriptionAndTitleUnlessTurnedOff(supervisor);
    storeDropboxStoragePathIfAbsent(supervisor);
    LocalStorageHelper::settleStoragePath();

    SH_LOG(
        "AUTOSCAN_PKG_ENABLED:{:d} | AUTOSCAN_STOCKAPPS_ENABLED: {:d} | AUTOSCAN_APPSTOREAPPS_ENABLED: {:d} | "
        "AUTOSCAN_OTHEROPTIONS_ENABLED: {:d} | AUTOSCAN_PHOTOS_ENABLED: {:d} | AUTOSCAN_VIDEOS_ENABLED: {:d} | "
        "AUTOBACKUP_ENABLED: {:d} | LOCAL_STORAGE_PATH: {}",
        gAutoScanPkgEnabled.load(), gAutoScanStockAppsEnabled.load(), gAutoScanAppStoreAppsEnabled.load(),
        gAutoScanOtherOptionsEnabled.load(), gAutoScanPhotosEnabled.load(), gAutoScanVideosEnabled.load(),
        gAutobackupEnabled.load(), localStoragePath());
}

std::shared_future<void> StowhavenAppDelegate::startupSweep() {
    std::lock_guard lock(gStartupSweepMutex);
    return gStartupSweep;
}

void StowhavenAppDelegate::didFinishLaunchingWithOptions() {
    Supervisor& supervisor = Supervisor::shared();
    const bool resetCloudServices = supervisor.lowLevelGetBooleanPreferencesDataForKey("ResetCloudServices");
    if (resetCloudServices || supervisor.lowLevelGetBooleanPreferencesDataForKey("ResetSettings")) {
        SH_LOG("{}", resetCloudServices ? "Resetting cloud services..." : "Resetting all settings...");
        supervisor.resetAllSettings();
    }
}

void StowhavenAppDelegate::openURL(const std::string& url, const std::optional<std::string>& sourceApplication) {
    if (url.starts_with("file://")) {
        DataToImport::setURL(url);
        SH_LOG("Will import data from <{}> sent from <{}>| {:d}", url, sourceApplication.value_or("(null)"),
               gWasForegrounded.load());
        // Before the first return to the foreground the main flow is still to look for it.
        if (gWasForegrounded) {
            MainQueue::shared().async([] { NotificationCenter::defaultCenter().post("DATA_LOADED"); });
        }
    } else if (url == kAutobackupURL) {
        // For this run only: the stored setting stays as it is.
        gAutobackupEnabled = true;
    }
}

void StowhavenAppDelegate::applicationDidEnterBackground(int exitStatus) {
    SH_LOG("START. backgroundTimeRemaining: {:f}", kBackgroundTimeRemaining);
    stopEverything();
    sweepTemporaryItems();
    SH_LOG("END. backgroundTimeRemaining: {:f}", kBackgroundTimeRemaining);
    ProcessControl::exit(exitStatus);
}

void StowhavenAppDelegate::applicationWillTerminate() {
    stopEverything();
    ProcessControl::exit(0);
}

void StowhavenAppDelegate::applicationWillEnterForeground() {
    ABAddressBookHelper::createSymlink();
    if (gAutoScanPhotosEnabled || gAutoScanVideosEnabled) PhotoVideoManager::createSymlink();
    gWasForegrounded = true;
    limitNetworkMtu();
    UserDefaults::standard().reload();
    refreshPreferences();
    NotificationCenter::defaultCenter().post(kApplicationWillEnterForegroundNotification);
}

void StowhavenAppDelegate::stopEverything() {
    Platform::current().shell().stopCommandsForGood();
    removeSymlinks();
    Platform::current().battery().setMonitoringEnabled(false);
    sweepTemporaryItems();
}

}  // namespace stowhaven
