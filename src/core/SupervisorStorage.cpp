#include "core/Supervisor.h"

#include "core/SettingsKeys.h"
#include "platform/Log.h"
#include "storage/StorageEngines.h"

namespace stowhaven {

namespace {

constexpr const char* kCurrentStorageTypeKey = "CurrentStorageType";

struct StorageTypeFacts {
    const char* engineName;
    const char* logName;  // in "Storage is now: ..."
    const char* maximumBackupsKey;
};

// By type number.
constexpr std::array<StorageTypeFacts, 9> kStorageTypes = {{
    {"Addressbook", "ADDRESSBOOK", "MaximumBackupsInAddressbook"},
    {"Dropbox™", "DROPBOX", "MaximumBackupsInDropbox"},
    {"SugarSync™", "SUGARSYNC", "MaximumBackupsInSugarSync"},
    {"OneDrive™", "ONEDRIVE", "MaximumBackupsInSkyDrive"},
    {"BOX™", "BOX", "MaximumBackupsInBox"},
    {"local storage", "LOCAL", "MaximumBackupsInLocal"},
    {"FTP", "FTP", "MaximumBackupsInFTP"},
    {"GDrive™", "GDrive", "MaximumBackupsInGDrive"},
    {"OwnCloud™", "OWNCLOUD", "MaximumBackupsInOwnCloud"},
}};

// The engines that hold listings, in the order their caches are flushed.
constexpr std::array<StorageType, 7> kCachingEngines = {
    StorageType::Box,      StorageType::Dropbox,   StorageType::FTP,     StorageType::GDrive,
    StorageType::OwnCloud, StorageType::SugarSync, StorageType::SkyDrive};

bool isKnown(StorageType type) {
    const auto number = static_cast<std::int64_t>(type);
    return number >= 0 && number < static_cast<std::int64_t>(kStorageTypes.size());
}

std::size_t indexOf(StorageType type) { return static_cast<std::size_t>(type); }

}  // namespace

StorageType Supervisor::persistedStorageType() const {
    if (!lowLevelKeyExists(kCurrentStorageTypeKey)) return StorageType::Local;
    const auto number = lowLevelGetNumberPreferencesDataForKey(kCurrentStorageTypeKey);
    return static_cast<StorageType>(number ? number->numberAsInteger().value_or(0) : 0);
}

std::shared_ptr<StorageHelperProtocol> Supervisor::currentStorageEngine() const {
    const StorageType type = currentStorageType();
    return StorageEngines::engine(isKnown(type) ? type : StorageType::Local);
}

std::string Supervisor::storageEngineName() const {
    const StorageType type = currentStorageType();
    // Unlike its engine, an unknown type's name is the address book's.
    return kStorageTypes[indexOf(isKnown(type) ? type : StorageType::Addressbook)].engineName;
}

bool Supervisor::isStorageAddressbook() const { return currentStorageType() == StorageType::Addressbook; }
bool Supervisor::isStorageDropbox() const { return currentStorageType() == StorageType::Dropbox; }
bool Supervisor::isStorageSugarSync() const { return currentStorageType() == StorageType::SugarSync; }
bool Supervisor::isStorageSkyDrive() const { return currentStorageType() == StorageType::SkyDrive; }
bool Supervisor::isStorageBox() const { return currentStorageType() == StorageType::Box; }
bool Supervisor::isStorageLocal() const { return currentStorageType() == StorageType::Local; }
bool Supervisor::isStorageFTP() const { return currentStorageType() == StorageType::FTP; }
bool Supervisor::isStorageGDrive() const { return currentStorageType() == StorageType::GDrive; }
bool Supervisor::isStorageOwnCloud() const { return currentStorageType() == StorageType::OwnCloud; }

void Supervisor::setStorageToAddressbook() { setStorageTo(StorageType::Addressbook); }
void Supervisor::setStorageToDropbox() { setStorageTo(StorageType::Dropbox); }
void Supervisor::setStorageToSugarSync() { setStorageTo(StorageType::SugarSync); }
void Supervisor::setStorageToSkyDrive() { setStorageTo(StorageType::SkyDrive); }
void Supervisor::setStorageToBox() { setStorageTo(StorageType::Box); }
void Supervisor::setStorageToLocal() { setStorageTo(StorageType::Local); }
void Supervisor::setStorageToFTP() { setStorageTo(StorageType::FTP); }
void Supervisor::setStorageToGDrive() { setStorageTo(StorageType::GDrive); }
void Supervisor::setStorageToOwnCloud() { setStorageTo(StorageType::OwnCloud); }

void Supervisor::setStorageTo(StorageType type) {
    setCurrentStorageType(type);
    SH_LOG("Storage is now: {}", kStorageTypes[indexOf(type)].logName);
}

bool Supervisor::isCloudStorage() const { return !isStorageAddressbook(); }

bool Supervisor::isNetworkStorage() const { return !isStorageAddressbook() && !isStorageLocal(); }

bool Supervisor::isStorageSameAsDefault() const { return currentStorageType() == persistedStorageType(); }

void Supervisor::persistStorageType() {
    lowLevelStorePreferencesData(static_cast<std::int64_t>(currentStorageType()), kCurrentStorageTypeKey);
}

void Supervisor::cloudStorageFlushCache() {
    for (StorageType type : kCachingEngines) {
        if (const auto engine = StorageEngines::engine(type)) engine->flushCache();
    }
}

// A count that no settings screen could have written (-1, or one past 32 bits, which the
// rollover would take as "remove everything") reads as the nearest count there is.
void Supervisor::loadMaximumBackups() {
    for (std::size_t index = 0; index < kStorageTypes.size(); ++index) {
        const char* key = kStorageTypes[index].maximumBackupsKey;
        const auto number = lowLevelGetNumberPreferencesDataForKey(key);
        const std::int64_t stored = number ? number->numberAsInteger().value_or(0) : 0;
        maximumBackups_[index] = static_cast<std::int32_t>(SettingsKeys::withinRange(key, stored));
    }
}

void Supervisor::persistMaximumBackupsToKeep() {
    const std::size_t index = maximumBackupsIndex();
    lowLevelStorePreferencesData(static_cast<std::int64_t>(maximumBackups_[index].load()),
                                 kStorageTypes[index].maximumBackupsKey);
}

// An unknown type keeps the count of local storage, whose engine it works with.
std::size_t Supervisor::maximumBackupsIndex() const {
    const StorageType type = currentStorageType();
    return indexOf(isKnown(type) ? type : StorageType::Local);
}

std::int32_t Supervisor::maximumBackupsToKeep() const { return maximumBackups_[maximumBackupsIndex()]; }

void Supervisor::setMaximumBackupToKeep(std::int32_t count) { maximumBackups_[maximumBackupsIndex()] = count; }

}  // namespace stowhaven
