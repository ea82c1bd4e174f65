#include "storage/box/BoxWrapper.h"

#include "core/Supervisor.h"
#include "platform/AsciiCase.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "storage/StorageLayout.h"

#include <filesystem>

namespace stowhaven {

namespace {

constexpr const char* kRootFolderId = "0";
// Bytes to megabytes, for the log.
constexpr double kMegabytesPerByte = 9.5367431640625e-07;

std::vector<std::string> namesOf(const std::vector<BoxItem>& items, bool filesOnly) {
    std::vector<std::string> names;
    for (const BoxItem& item : items) {
        if (!filesOnly || !item.isFolder) names.push_back(item.name);
    }
    return names;
}

}  // namespace

BoxWrapper::BoxWrapper() : client_(BoxService::fromEnvironment(), *this) {}

bool BoxWrapper::isLoggedIn() const { return initializationCompleted_ && BoxTokens::storedRefreshToken().has_value(); }

std::string BoxWrapper::userName() const {
    std::lock_guard lock(mutex_);
    return currentUser_ ? currentUser_->login : std::string();
}

bool BoxWrapper::getAccountInfos() {
    const auto user = client_.currentUser();
    if (!user) return false;
    freeSpace_ = static_cast<double>(user->spaceAmount - user->spaceUsed);
    SH_LOG("FreeSpace: {:.3f}Mb | maxUploadSize: {:.3f}Mb", freeSpace_ * kMegabytesPerByte,
           static_cast<double>(user->maxUploadSize) * kMegabytesPerByte);
    std::lock_guard lock(mutex_);
    currentUser_ = user;
    return true;
}

void BoxWrapper::clearMainAndRootData() {
    initializationCompleted_ = false;
    std::lock_guard lock(mutex_);
    rootFolderData_.reset();
    mainDirectoryData_.reset();
    rootDirectoryData_.reset();
}

// The folders in hand stay usable until the new ones are known: a flush of the cache may run
// beside a job.
bool BoxWrapper::initializeBaseFolders() {
    getAccountInfos();
    const auto root = client_.folder(kRootFolderId);
    if (!root) SH_LOG("Couldn't find the root directory!");
    const auto base = root ? processRootFolderData() : std::nullopt;
    const auto device = base ? processMainDirectoryData(base->id) : std::nullopt;
    if (!device) {
        clearMainAndRootData();
        return false;
    }
    std::lock_guard lock(mutex_);
    rootFolderData_ = root;
    mainDirectoryData_ = base;
    rootDirectoryData_ = device;
    initializationCompleted_ = true;
    return true;
}

std::optional<BoxItem> BoxWrapper::processRootFolderData() {
    const auto items = client_.folderItems(kRootFolderId);
    if (!items) return std::nullopt;
    std::optional<std::string> baseId;
    for (const BoxItem& item : *items) {
        if (item.isFolder && equalsIgnoringAsciiCase(item.name, StorageLayout::kBaseDirectoryName)) {
            baseId = item.id;
            break;
        }
    }
    if (!baseId) {
        if (const auto made = client_.createFolder(std::string(StorageLayout::kBaseDirectoryName), kRootFolderId)) {
            SH_LOG("<Stowhaven> directory created!");
            baseId = made->id;
        }
    }
    auto base = baseId ? client_.folder(*baseId) : std::nullopt;
    if (!base) SH_LOG("Couldn't create the <Stowhaven> directory!");
    return base;
}

std::optional<BoxItem> BoxWrapper::processMainDirectoryData(const std::string& baseId) {
    const Supervisor& supervisor = Supervisor::shared();
    const std::string& deviceName = supervisor.deviceName();
    const std::string& deviceUID = supervisor.deviceUID();
    const auto items = client_.folderItems(baseId);
    if (!items) return std::nullopt;
    std::optional<std::string> deviceId;
    for (const BoxItem& item : *items) {
        if (!item.isFolder) continue;
        if (equalsIgnoringAsciiCase(item.name, deviceName)) {
            deviceId = item.id;
        } else if (equalsIgnoringAsciiCase(item.name, deviceUID)) {
            // A folder of an older version, named after the device's identifier.
            SH_LOG("Migrating from data directory from {} to {}...", item.name, deviceName);
            if (!rename(item.id, deviceName)) {
                SH_LOG("FAILED to migrate from data directory from {} to {}. Error: {}!", item.name, deviceName,
                       errorMessage().value_or("(null)"));
                return std::nullopt;
            }
            SH_LOG("Migrated from data directory from {} to {}!", item.name, deviceName);
            deviceId = item.id;
        } else {
            continue;
        }
        break;
    }
    if (!deviceId) {
        if (const auto made = client_.createFolder(deviceName, baseId)) {
            SH_LOG("<{}> directory created under <Stowhaven>!", deviceName);
            deviceId = made->id;
        }
    }
    auto device = deviceId ? client_.folder(*deviceId) : std::nullopt;
    if (!device) SH_LOG("Couldn't create the <{}> directory under <Stowhaven>!", deviceName);
    return device;
}

std::optional<std::string> BoxWrapper::mainDirectoryId() const {
    std::lock_guard lock(mutex_);
    if (mainDirectoryData_) return mainDirectoryData_->id;
    return std::nullopt;
}

std::optional<std::string> BoxWrapper::deviceDirectoryId() const {
    std::lock_guard lock(mutex_);
    if (rootDirectoryData_) return rootDirectoryData_->id;
    return std::nullopt;
}

std::optional<std::vector<BoxItem>> BoxWrapper::deviceItems() {
    const auto id = deviceDirectoryId();
    if (!id) {
        setErrorMessage("Box isn't ready: the device's folder is unknown");
        return std::nullopt;
    }
    return client_.folderItems(*id);
}

std::optional<std::vector<std::string>> BoxWrapper::availableDeviceBackups() {
    const auto baseId = mainDirectoryId();
    if (!baseId) {
        setErrorMessage("Box isn't ready: the <Stowhaven> folder is unknown");
        return std::nullopt;
    }
    const auto items = client_.folderItems(*baseId);
    if (!items) return std::nullopt;
    return namesOf(*items, false);
}

std::optional<std::vector<std::string>> BoxWrapper::existingFiles() {
    const auto items = deviceItems();
    if (!items) return std::nullopt;
    return namesOf(*items, true);
}

std::optional<std::vector<std::string>> BoxWrapper::getDeviceBackupData(const std::string& deviceFolderId) {
    const auto items = client_.folderItems(deviceFolderId);
    if (!items) return std::nullopt;
    return namesOf(*items, true);
}

std::optional<std::string> BoxWrapper::folderIdForDevice(const std::string& deviceName) {
    const auto baseId = mainDirectoryId();
    const auto items = baseId ? client_.folderItems(*baseId) : std::nullopt;
    if (!items) return std::nullopt;
    for (const BoxItem& item : *items) {
        if (item.isFolder && item.name == deviceName) return item.id;
    }
    return std::nullopt;
}

std::optional<std::string> BoxWrapper::idWithName(const std::string& name, bool asFolder) {
    std::optional<std::string> id;
    if (const auto items = deviceItems()) {
        for (const BoxItem& item : *items) {
            if (item.isFolder == asFolder && equalsIgnoringAsciiCase(item.name, name)) id = item.id;
        }
    }
    if (id) return id;
    std::lock_guard lock(mutex_);
    for (const BoxItem& item : prefetchData_) {
        if (item.isFolder == asFolder && equalsIgnoringAsciiCase(item.name, name)) return item.id;
    }
    return std::nullopt;
}

bool BoxWrapper::prefetchFileAndFolderIds(const std::string& folderId) {
    const auto session = client_.folder(folderId);
    if (!session) {
        SH_LOG("Can't find BOXFolder with id {}", folderId);
        return false;
    }
    std::vector<BoxItem> prefetched{*session};
    const auto items = client_.folderItems(folderId);
    if (!items) return false;
    for (const BoxItem& item : *items) {
        prefetched.push_back(item);
        if (!item.isFolder) continue;
        const auto inner = client_.folderItems(item.id);
        if (!inner) return false;
        prefetched.insert(prefetched.end(), inner->begin(), inner->end());
    }
    std::lock_guard lock(mutex_);
    prefetchData_ = std::move(prefetched);
    return true;
}

void BoxWrapper::clearPrefetchData() {
    std::lock_guard lock(mutex_);
    prefetchData_.clear();
}

std::optional<std::string> BoxWrapper::createFolder(const std::string& name,
                                                    const std::optional<std::string>& inFolderId) {
    const auto parent = inFolderId ? inFolderId : deviceDirectoryId();
    if (!parent) {
        setErrorMessage("Box isn't ready: the device's folder is unknown");
        return std::nullopt;
    }
    const auto made = client_.createFolder(name, *parent);
    if (!made) return std::nullopt;
    return made->id;
}

bool BoxWrapper::uploadFile(const std::string& localPath, const std::optional<std::string>& inFolderId) {
    const std::string name = std::filesystem::path(localPath).filename().string();
    const auto parent = inFolderId ? inFolderId : deviceDirectoryId();
    if (!parent) {
        setErrorMessage("Box isn't ready: the device's folder is unknown");
        return false;
    }
    return client_.upload(localPath, name, *parent).has_value();
}

bool BoxWrapper::downloadFileData(const std::string& id, const std::string& localPath) {
    return client_.download(id, localPath);
}

bool BoxWrapper::deleteWithId(const std::string& id, bool asFolder) { return client_.deleteItem(id, asFolder); }

bool BoxWrapper::rename(const std::string& id, const std::string& name) { return client_.renameFolder(id, name); }

void BoxWrapper::removeTokens() {
    client_.tokens().revoke();
    clearMainAndRootData();
}

void BoxWrapper::unlink() {
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(), BoxTokens::kRefreshTokenKey);
    SH_LOG("Unlinked!");
}

}  // namespace stowhaven
