#include "storage/onedrive/SkyDriveHelper.h"

#include "core/Supervisor.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/StorageLayout.h"
#include "storage/onedrive/SkyDriveWrapper.h"

#include <algorithm>

namespace stowhaven {

namespace {

// The history files of a listing under the names they were sent with, oldest first: their
// stamps sort as text in date order.
std::vector<std::string> historyFilesOf(const std::vector<SkyDriveEntry>& entries) {
    std::vector<std::string> names;
    for (const SkyDriveEntry& entry : entries) {
        if (!entry.isFolder) names.push_back(SkyDriveWrapper::localName(entry.name));
    }
    names = StorageLayout::existingFiles(names);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

}  // namespace

std::shared_ptr<SkyDriveHelper> SkyDriveHelper::createSkyDriveHelper() {
    StorageEngines::registerFactory(StorageType::SkyDrive, [] {
        auto helper = std::make_shared<SkyDriveHelper>();
        SH_LOG("SkyDriveHelper created!");
        helper->observeOperationCanceled();
        if (Supervisor::shared().isStorageSkyDrive()) helper->connect();
        return helper;
    });
    return std::dynamic_pointer_cast<SkyDriveHelper>(StorageEngines::create(StorageType::SkyDrive));
}

void SkyDriveHelper::unlink() {
    SkyDriveTokens::unlink();
    SH_LOG("Unlinked!");
}

SkyDriveHelper::SkyDriveHelper() : CloudStorageHelper(std::make_unique<SkyDriveWrapper>(), StorageType::SkyDrive) {}

SkyDriveWrapper& SkyDriveHelper::skyDrive() const { return static_cast<SkyDriveWrapper&>(*wrapper()); }

bool SkyDriveHelper::isInitialized() { return skyDrive().rootDirectoryData().has_value() || hasError(); }

bool SkyDriveHelper::start() {
    beginRequest();
    return canStart(skyDrive().service().problem(), skyDrive().isLoggedIn(), "OneDrive") &&
           skyDrive().retrieveAccountName() && skyDrive().retrieveQuota() && skyDrive().retrieveRootFolder() &&
           loadListings(true);
}

bool SkyDriveHelper::loadDeviceFolders() {
    const auto mainId = mainFolderId();
    const auto devices = mainId ? skyDrive().loadFileListFrom(*mainId) : std::nullopt;
    if (!devices) return false;
    std::vector<std::string> names;
    for (const SkyDriveEntry& entry : *devices) names.push_back(entry.name);
    internalAvailableDeviceBackups_.replaceChildren(*mainId, *devices);
    setAvailableDeviceBackups(std::move(names));
    return true;
}

// The lists in hand stay until the new ones are read, as a job may be reading them.
bool SkyDriveHelper::loadListings(bool forgettingDamagedFiles) {
    const auto deviceId = deviceFolderId();
    if (!deviceId || !loadDeviceFolders()) return false;
    const auto entries = skyDrive().loadFileListFrom(*deviceId);
    if (!entries) return false;
    internalExistingFiles_.replaceChildren(*deviceId, *entries);
    if (forgettingDamagedFiles) {
        replaceExistingFiles(historyFilesOf(*entries));
    } else {
        setExistingFiles(historyFilesOf(*entries));
    }
    return true;
}

std::optional<std::string> SkyDriveHelper::deviceFolderId() {
    if (const auto device = skyDrive().rootDirectoryData()) return device->id;
    failWith("OneDrive isn't ready: the device's folder is unknown");
    return std::nullopt;
}

std::optional<std::string> SkyDriveHelper::mainFolderId() {
    if (const auto main = skyDrive().mainDirectoryData()) return main->id;
    failWith("OneDrive isn't ready: the <Stowhaven> folder is unknown");
    return std::nullopt;
}

std::optional<std::string> SkyDriveHelper::logInWithCode(const std::string& code) {
    beginRequest();
    const bool exchanged = skyDrive().tokens().exchangeCode(code);
    return connectAfterLogIn(exchanged, skyDrive().tokens().lastError(),
                             {"SKYDRIVE_LOGIN_FAILED", "SKYDRIVE_LOGIN_SUCCESS", "OneDrive refused the login"});
}

void SkyDriveHelper::disconnect() {
    skyDrive().disconnect();
    internalExistingFiles_.clear();
    internalAvailableDeviceBackups_.clear();
    clearExistingFiles();
    setAvailableDeviceBackups({});
    Supervisor::shared().setStorageToLocal();
    SH_LOG("Disconnected!");
}

bool SkyDriveHelper::isLoggedIn() {
    return Platform::current().reachability().isConnectedToNetwork() && skyDrive().isLoggedIn();
}

std::string SkyDriveHelper::accountName() { return skyDrive().accountName(); }

void SkyDriveHelper::flushCache() {
    internalExistingFiles_.clear();
    internalAvailableDeviceBackups_.clear();
    forgetPrefetchedSession();
    CloudStorageHelper::flushCache();
}

void SkyDriveHelper::resetAll() { unlink(); }

double SkyDriveHelper::freeSpace() { return skyDrive().freeSpace(); }

void SkyDriveHelper::refreshFreeSpace() { skyDrive().retrieveQuota(); }

void SkyDriveHelper::loadAvailableDeviceBackups() {
    beginRequest();
    SH_LOG("Reloading available device backups...");
    const bool loaded = loadDeviceFolders();
    if (loaded)
        MainQueue::shared().async(
            [] { NotificationCenter::defaultCenter().post("ALL_DEVICE_DATA_AVAILABLE_FROM_ICLOUD"); });
    finish(loaded);
}

void SkyDriveHelper::loadDefaultBackupDetails() {
    beginRequest();
    loadListings(false);
}

std::optional<SkyDriveEntry> SkyDriveHelper::deviceFolderNamed(const std::string& deviceName) {
    const auto mainId = mainFolderId();
    auto folder = isOneFileName(deviceName) && mainId && loadDeviceFolders()
                      ? internalAvailableDeviceBackups_.folder(deviceName, *mainId)
                      : std::nullopt;
    if (!folder && !hasError()) failWith("Couldn't find data for <" + deviceName + ">");
    return folder;
}

void SkyDriveHelper::loadBackupDetailsForDevice(const std::string& deviceName) {
    beginRequest();
    const auto folder = deviceFolderNamed(deviceName);
    if (!folder) return performFailureSelector();
    const auto entries = skyDrive().loadFileListFrom(folder->id);
    if (!entries) return performFailureSelector();
    performSuccessSelector(historyFilesOf(*entries));
}

void SkyDriveHelper::loadMostRecentBackupSession() {
    beginRequest();
    if (loadListings(false)) fetchNewestHistoryFile();
}

bool SkyDriveHelper::fetchHistoryFile(const std::string& name) {
    const auto deviceId = deviceFolderId();
    const auto entry = deviceId ? internalExistingFiles_.file(name, *deviceId) : std::nullopt;
    if (!entry) return failWith("Couldn't find backup data FILE with name <" + name + ">");
    return fetch(entry->id, name).has_value();
}

std::optional<std::string> SkyDriveHelper::fetch(const std::string& id, const std::string& name) {
    const auto path = temporaryPathOf(name);
    if (!path || !skyDrive().downloadFileData(id, *path)) return std::nullopt;
    return path;
}
}  // namespace stowhaven
