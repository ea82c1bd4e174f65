#include "core/SettingsKeys.h"

#include "core/ProcessFlags.h"

#include <algorithm>

namespace stowhaven {

namespace {

SettingKey registered(std::string name, SettingKind kind, PlistValue defaultValue, std::atomic<bool>* flag = nullptr) {
    return {std::move(name), kind, std::move(defaultValue), flag};
}

SettingKey unregistered(std::string name, SettingKind kind, bool secret = false) {
    return {std::move(name), kind, PlistValue(), nullptr, secret};
}

std::vector<SettingKey> makeTable() {
    using enum SettingKind;
    std::vector<SettingKey> table = {
        registered("CurrentStorageType", Integer, 5),
        registered("RepeatSchedule", Integer, -1),
        registered("Weekday", Integer, -1),
        // Its flag is a float with a range of its own: refreshPreferences reads it.
        registered("MinDeviceBatteryLevel", Float, 0.0),
        registered("MaximumBackupsInAddressbook", Integer, 0),
        registered("MaximumBackupsInBox", Integer, 0),
        registered("MaximumBackupsInDropbox", Integer, 0),
        registered("MaximumBackupsInFTP", Integer, 0),
        registered("MaximumBackupsInGDrive", Integer, 0),
        registered("MaximumBackupsInLocal", Integer, 0),
        registered("MaximumBackupsInSkyDrive", Integer, 0),
        registered("MaximumBackupsInSugarSync", Integer, 0),
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
        registered("RestoreFromDebsEnabled", Boolean, false, &gRestoreFromDebsEnabled),
        registered("BackupDescriptionEnabled", Boolean, true, &gBackupDescriptionEnabled),
        registered("BackupTitleEnabled", Boolean, true, &gBackupTitleEnabled),

        unregistered("MaximumBackupsInOwnCloud", Integer),
        unregistered("DropboxStoragePath", String),
        unregistered("LocalStoragePath", String),
        unregistered("SplitSizeInMegaBytes", Integer),
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
        for (const char* list : {"Photos", "Videos", "DefaultApps", "DefaultPreferencesFiles",
                                 "DefaultSpringboardFiles", "DefaultSources"}) {
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
        unregistered("SKYDRIVE_ACCESS_TOKEN", String, true),
        unregistered("SKYDRIVE_REFRESH_TOKEN", String, true),
        unregistered("SKYDRIVE_TOKEN_EXPIRY_DATE", Date),
        unregistered("SUGARSYNC_LOGIN", String),
        unregistered("SUGARSYNC_PASSWORD", String, true),
        unregistered("SUGARSYNC_TOKEN_EXPIRATION_DATE", Date),
        unregistered("box_api_refresh_token", String, true),
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

PlistValue::Dictionary SettingsKeys::registeredDefaults() {
    PlistValue::Dictionary defaults;
    for (const SettingKey& key : all()) {
        if (key.isRegistered()) defaults.emplace(key.name, key.defaultValue);
    }
    return defaults;
}

}  // namespace stowhaven
