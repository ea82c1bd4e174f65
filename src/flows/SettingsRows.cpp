#include "flows/SettingsRows.h"

#include <array>

namespace stowhaven {

namespace {

constexpr std::array<EngineRow, 9> kEngineRows = {{
    {StorageType::Box, "Box™"},
    {StorageType::Dropbox, "Dropbox™"},
    {StorageType::FTP, "FTP"},
    {StorageType::GDrive, "Google Drive™"},
    {StorageType::OwnCloud, "ownCloud™"},
    {StorageType::SkyDrive, "OneDrive™"},
    {StorageType::SugarSync, "SugarSync™"},
    {StorageType::Local, "Local storage"},
    {StorageType::Addressbook, "Address book"},
}};

std::vector<SwitchSection> makeSections() {
    using enum SwitchRow::Kind;
    return {
        {"AT STARTUP",
         {{Switch, "Scan Cydia packages", "AutoScanPkgEnabled"},
          {Switch, "Scan Apple stock apps", "AutoScanStockAppsEnabled"},
          {Switch, "Scan AppStore™ applications", "AutoScanAppStoreAppsEnabled"},
          {Switch, "Scan other options", "AutoScanOtherOptionsEnabled"},
          {Switch, "Scan Photos", "AutoScanPhotosEnabled"},
          {Switch, "Scan Videos", "AutoScanVideosEnabled"},
          {Switch, "Automatic backup", "AutobackupEnabled"}}},
        {"PACKAGES AS DEB FILES",
         {{Switch, "Backup package as DEB", "BackupDebsEnabled"},
          {Switch, "Repack missing packages", "RepackMissingDebsEnabled"},
          {Switch, "Restore package from DEB", "RestoreFromDebsEnabled"}}},
        {"BACKUP/RESTORE NETWORK USAGE", {{Switch, "Only on Wifi", "CloudStorageOnWifiOnly"}}},
        {"BACKUP/RESTORE POWER RESTRICTION",
         {{Switch, "Only plugged in/powered", "PluggedInDeviceOnly"},
          {Slider, "Minimum battery level", "MinDeviceBatteryLevel"}}},
        {"DIALOGS",
         {{Switch, "Confirm backup", "ConfirmBackup"},
          {Switch, "Confirm restore", "ConfirmRestore"},
          {Switch, "Backup title", "BackupTitleEnabled"},
          {Switch, "Backup description", "BackupDescriptionEnabled"},
          {Switch, "Check free space", "FreeSpaceCheckEnabled"},
          {Switch, "Check firmware compatibility", "PkgFWCompatibilityCheckEnabled"},
          {Switch, "Encrypt backup", "EncryptBackupEnabled"}}},
        {"ALERTS", {{Switch, "Enable sound", "SoundEnabled"}, {Switch, "Enable vibration", "VibrateEnabled"}}},
        {"BACKUP/RESTORE EVENTS", {{Switch, "iCal integration", "iCalIntegrationEnabled"}}},
        {"LOCALIZATION", {{Switch, "Enable", "EnableLocalization"}}},
        {"RESET CLOUD SERVICES", {{Reset, "Activate", "ResetCloudServices"}}},
        {"RESET ALL SETTINGS", {{Reset, "Activate", "ResetSettings"}}},
        {"Stowhaven™ keeps your device's packages, settings and data", {}},
    };
}

}  // namespace

std::span<const EngineRow> engineRows() { return kEngineRows; }

const std::vector<SwitchSection>& switchSections() {
    static const std::vector<SwitchSection> sections = makeSections();
    return sections;
}

}  // namespace stowhaven
