#include "core/SettingsKeys.h"

#include "core/ProcessFlags.h"
#include "platform/Log.h"

#include <algorithm>
#include <limits>

namespace stowhaven {

namespace {

constexpr std::int64_t kInt32Max = std::numeric_limits<std::int32_t>::max();

// The storage types by number, the address book to ownCloud.
constexpr IntegerRange kStorageTypes{0, 8};
// No code reads the schedule; -1 is none.
constexpr IntegerRange kRepeatSchedules{-1, kInt32Max};
// -1 for none, else a day of the week, 1 (Sunday) to 7, as the device's calendar counts.
constexpr IntegerRange kWeekdays{-1, 7};
// Backups to keep, 0 for all; each engine's count is a 32-bit number. The settings screen
// takes digits only, so no count is ever below 0.
constexpr IntegerRange kBackupCounts{0, kInt32Max};
// Megabytes per part: split takes sizes up to 2^43 - 1 megabytes, the catalogue keeps the
// size in 32 bits.
constexpr IntegerRange kSplitSizes{1, kInt32Max};

SettingKey registered(std::string name, SettingKind kind, PlistValue defaultValue, std::atomic<bool>* flag = nullptr) {
    return {std::move(name), kind, std::move(defaultValue), flag, false, std::nullopt};
}

SettingKey registeredInteger(std::string name, std::int64_t defaultValue, IntegerRange range) {
    return {std::move(name), SettingKind::Integer, PlistValue(defaultValue), nullptr, false, range};
}

SettingKey unregistered(std::string name, SettingKind kind, bool secret = false) {
    return {std::move(name), kind, PlistValue(), nullptr, secret, std::nullopt};
}

SettingKey unregisteredInteger(std::string name, IntegerRange range) {
    return {std::move(name), SettingKind::Integer, PlistValue(), nullptr, false, range};
}

std::vector<SettingKey> makeTable() {
    using enum SettingKind;
    std::vector<SettingKey> table = {
        registeredInteger("CurrentStorageType", 5, kStorageTypes),
        registeredInteger("RepeatSchedule", -1, kRepeatSchedules),
        registeredInteger("Weekday", -1, kWeekdays),
        // Its flag is a float with a range of its own: refreshPreferences reads it.
        registered("MinDeviceBatteryLevel", Float, 0.0),
        registeredInteger("MaximumBackupsInAddressbook", 0, kBackupCounts),
        registeredInteger("MaximumBackupsInBox", 0, kBackupCounts),
        registeredInteger("MaximumBackupsInDropbox", 0, kBackupCounts),
        registeredInteger("MaximumBackupsInFTP", 0, kBackupCounts),
        registeredInteger("MaximumBackupsInGDrive", 0, kBackupCounts),
        registeredInteger("MaximumBackupsInLocal", 0, kBackupCounts),
        registeredInteger("MaximumBackupsInSkyDrive", 0, kBackupCounts),
        registeredInteger("MaximumBackupsInSugarSync", 0, kBackupCounts),
        registered("BackupMemoEnabled", Boolean, true),
        registered("SoundEnabled", Boolean, true, &gSoundEnabled),
        registered("ConfirmBackup", Boolean, true, &gConfirmBackup),
        registered("ConfirmRestore", Boolean, true, &gConfirmRestore),
        registered("VibrateEnabled", Boolean, true, &gVibrateEnabled),
        registered("FreeSpaceCheckEnabled", Boolean, true, &gFreeSpaceCheckEnabled),
        registered("PkgFWCompatibilityCheckEnabled", Boolean, true, &gPkgFWCompatibilityCheckEnabled),
        registered("AutoScanPkgEnabled", Boolean, false, &gAutoScanPkgEnabled),
        registered("AutoScanAppStoreAppsEnabled", Boolean, false, &gAutoScanAppStoreAppsEnabled),
        registered("AutoScanStockAppsEnabled", Boolean, false, &gAutoScanStockAppsEnabled),
        registered("AutoScanOtherOptionsEnabled", Boolean, false, &gAutoScanOtherOptionsEnabled),
        registered("AutoScanPhotosEnabled", Boolean, false, &gAutoScanPhotosEnabled),
        registered("AutoScanVideosEnabled", Boolean, false, &gAutoScanVideosEnabled),
        registered("AutobackupEnabled", Boolean, false, &gAutobackupEnabled),
        registered("iCalIntegrationEnabled", Boolean, false, &gICalIntegrationEnabled),
        registered("CloudStorageOnWifiOnly", Boolean, false, &gCloudStorageOnWifiOnly),
        registered("PluggedInDeviceOnly", Boolean, false, &gPluggedInDeviceOnly),
        // Read by the language steps at start, before any flag exists.
        registered("EnableLocalization", Boolean, false),
        registered("EncryptBackupEnabled", Boolean, false, &gEncryptBackupEnabled),
        registered("UseSameEncryptionKeyEnabled", Boolean, false, &gUseSameEncryptionKeyEnabled),
        registered("BackupDebsEnabled", Boolean, false, &gBackupDebsEnabled),
        // Rebuilds from the device the captured packages that no repository serves any more.
        registered("RepackMissingDebsEnabled", Boolean, true),
        registered("RestoreFromDebsEnabled", Boolean, false, &gRestoreFromDebsEnabled),
        registered("BackupDescriptionEnabled", Boolean, true, &gBackupDescriptionEnabled),
        registered("BackupTitleEnabled", Boolean, true, &gBackupTitleEnabled),

        unregisteredInteger("MaximumBackupsInOwnCloud", kBackupCounts),
        unregistered("DropboxStoragePath", String),
        unregistered("LocalStoragePath", String),
        unregisteredInteger("SplitSizeInMegaBytes", kSplitSizes),
        unregistered("Backup_EncryptionKey", String, true),
        unregistered("ResetSettings", Boolean),
        unregistered("ResetCloudServices", Boolean),
        unregistered("CurrentVersion", String),
        unregistered("LAST_RESTORE_DATE", Date),
        unregistered("LAST_RESTORE_TITLE", String),
        unregistered("LAST_RESTORE_DESCRIPTION", String),
        unregistered("DefaultEventCalendar", String),
        unregistered("AppleLanguages", Array),
    };

    // The selection defaults, one per direction.
    for (const char* suffix : {"_Backup", "_Restore"}) {
        for (const char* category : {"Calendar", "Chat", "Contacts", "Health", "Maps", "Notes", "Phone", "Safari"}) {
            table.push_back(unregistered(category + std::string(suffix), Boolean));
        }
        for (const char* list : {"Photos", "Videos", "DefaultApps", "DefaultPackages", "DefaultPreferencesFiles",
                                 "DefaultSpringboardFiles", "DefaultSources"}) {
            table.push_back(unregistered(list + std::string(suffix), Array));
        }
        // The items chosen in the folders whose contents are chosen one by one.
        for (const char* list :
             {"DefaultIconoclasm", "DefaultMXTubes", "DefaultProTube", "DefaultROMGames", "DefaultRingtonesCydia",
              "DefaultRingtonesiTunes", "DefaultSHSH", "DefaultSafariDownloadManager", "DefaultSummerboardThemes",
              "DefaultWebClips", "DefaultWinterboardThemes"}) {
            table.push_back(unregistered(list + std::string(suffix), Array));
        }
    }
    table.push_back(unregistered("Backup_ArchivableFolders", Array));
    table.push_back(unregistered("Restore_ArchivableFolders", Array));

    // The storage engines' keys. The saved hosts are dictionaries with a "password" each.
    const std::vector<SettingKey> engineKeys = {
        unregistered("FTPHost", String),
        unregistered("FTPHosts", Array, true),
        unregistered("FTPLogin", String),
        unregistered("FTPPassive", Boolean),
        unregistered("FTPPassword", String, true),
        unregistered("FTPPort", String),
        unregistered("FTPRootDirectory", String),
        unregistered("OwnCloudHost", String),
        unregistered("OwnCloudHosts", Array, true),
        unregistered("OwnCloudLogin", String),
        unregistered("OwnCloudPassword", String, true),
        unregistered("OwnCloudRootDirectory", String),
        unregistered("Stowhaven_v7_GDRIVE", String, true),
        unregistered("gdrive_login_state", String),
        unregistered("gdrive_login_verifier", String, true),
        unregistered("SKYDRIVE_ACCESS_TOKEN", String, true),
        unregistered("SKYDRIVE_REFRESH_TOKEN", String, true),
        unregistered("SKYDRIVE_TOKEN_EXPIRY_DATE", Date),
        unregistered("skydrive_login_state", String),
        unregistered("SUGARSYNC_LOGIN", String),
        unregistered("SUGARSYNC_PASSWORD", String, true),
        unregistered("SUGARSYNC_TOKEN_EXPIRATION_DATE", Date),
        unregistered("box_api_refresh_token", String, true),
        unregistered("box_api_login_state", String),
        unregistered("kDBDropboxSavedCredentials", Array, true),
        unregistered("dropbox.sync.nonce", String),
    };
    table.insert(table.end(), engineKeys.begin(), engineKeys.end());
    return table;
}

}  // namespace

std::string_view nameOf(SettingKind kind) {
    switch (kind) {
        case SettingKind::Boolean:
            return "boolean";
        case SettingKind::Integer:
            return "integer";
        case SettingKind::Float:
            return "float";
        case SettingKind::String:
            return "string";
        case SettingKind::Date:
            return "date";
        case SettingKind::Array:
            return "array";
    }
    return "unknown";
}

const std::vector<SettingKey>& SettingsKeys::all() {
    static const std::vector<SettingKey> table = makeTable();
    return table;
}

const SettingKey* SettingsKeys::find(std::string_view name) {
    const auto& table = all();
    const auto key =
        std::find_if(table.begin(), table.end(), [&](const SettingKey& entry) { return entry.name == name; });
    return key == table.end() ? nullptr : &*key;
}

std::int64_t SettingsKeys::withinRange(std::string_view name, std::int64_t stored) {
    const SettingKey* key = find(name);
    if (key == nullptr || !key->range || key->range->contains(stored)) return stored;
    const std::int64_t nearest = key->range->nearest(stored);
    SH_LOG("{} holds {}, outside {} to {}: read as {}", name, stored, key->range->lowest, key->range->highest, nearest);
    return nearest;
}

PlistValue::Dictionary SettingsKeys::registeredDefaults() {
    PlistValue::Dictionary defaults;
    for (const SettingKey& key : all()) {
        if (key.isRegistered()) defaults.emplace(key.name, key.defaultValue);
    }
    return defaults;
}

}  // namespace stowhaven
