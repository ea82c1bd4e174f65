#include "storage/sugarsync/SugarSyncHelper.h"

#include "core/Supervisor.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/StorageLayout.h"
#include "storage/sugarsync/SugarSyncWrapper.h"

#include <algorithm>

namespace stowhaven {

std::shared_ptr<SugarSyncHelper> SugarSyncHelper::createSugarSyncHelper() {
    StorageEngines::registerFactory(StorageType::SugarSync, [] {
        auto helper = std::make_shared<SugarSyncHelper>();
        helper->observeOperationCanceled();
        if (Supervisor::shared().isStorageSugarSync()) helper->connect();
        SH_LOG("SugarSyncHelper created!");
        return helper;
    });
    return std::dynamic_pointer_cast<SugarSyncHelper>(StorageEngines::create(StorageType::SugarSync));
}

void SugarSyncHelper::unlink() { SugarSyncWrapper::unlink(); }

SugarSyncHelper::SugarSyncHelper() : CloudStorageHelper(std::make_unique<SugarSyncWrapper>(), StorageType::SugarSync) {}

SugarSyncWrapper& SugarSyncHelper::sugarSync() const { return static_cast<SugarSyncWrapper&>(*wrapper()); }

std::optional<std::string> SugarSyncHelper::logIn(const std::string& user, const std::string& password, bool storing) {
    beginRequest();
    if (!canReachService(sugarSync().client().service().problem())) return errorMessage();
    if (!sugarSync().logIn(user, password, storing) || !loadListings()) {
        NotificationCenter::defaultCenter().post("SUGARSYNC_LOGIN_FAIL");
        return errorMessage().value_or("SugarSync refused the login");
    }
    return std::nullopt;
}

// The account is proved by the login itself, so the stored credentials are looked for first.
bool SugarSyncHelper::start() {
    const auto credentials = SugarSyncWrapper::storedCredentials();
    if (!credentials) return failWithNoAccountLinked("SugarSync");
    return !logIn(credentials->first, credentials->second, true);
}

void SugarSyncHelper::disconnect() {
    sugarSync().disconnect();
    clearExistingFiles();
    setAvailableDeviceBackups({});
    SH_LOG("Disconnected!");
}

bool SugarSyncHelper::isLoggedIn() {
    return Platform::current().reachability().isConnectedToNetwork() && sugarSync().isLoggedIn();
}

std::string SugarSyncHelper::accountName() { return sugarSync().userName(); }

void SugarSyncHelper::resetAll() { unlink(); }

// The two folder references stay: the next listing reads the storage again through them.
void SugarSyncHelper::flushCache() {
    setAvailableDeviceBackups({});
    clearExistingFiles();
    forgetPreloadedEntries();
    std::lock_guard lock(mutex_);
    internalAvailableDeviceBackups_.reset();
    internalExistingFiles_.reset();
}

// The walk runs at each call, and its end is told even when there was nothing to walk.
void SugarSyncHelper::retrieveRestOfBackupHistory() {
    if (!existingFiles().empty()) return AbstractStorageHelper::retrieveRestOfBackupHistory();
    hideProgress();
    NotificationCenter::defaultCenter().post("BACKUP_HISTORY_LOADED");
}

double SugarSyncHelper::freeSpace() { return sugarSync().freeSpace(); }

void SugarSyncHelper::refreshFreeSpace() { sugarSync().storageUtilization(); }

bool SugarSyncHelper::loadListings() { return listDeviceFolders() && listDeviceFolder(); }

bool SugarSyncHelper::listDeviceFolders() {
    const auto root = sugarSync().getBriefcaseFolderRef(std::string(StorageLayout::kBaseDirectoryName));
    const auto entries = sugarSync().getFolderContent(root);
    if (!entries) return false;
    std::vector<std::string> names;
    std::optional<std::string> main;
    for (const SugarSyncEntry& entry : *entries) {
        names.push_back(entry.name);
        if (entry.isFolder && entry.name == Supervisor::shared().deviceName()) main = entry.ref;
    }
    {
        std::lock_guard lock(mutex_);
        rootFolderRef_ = root;
        if (main) mainFolderRef_ = main;
        internalAvailableDeviceBackups_ = *entries;
    }
    setAvailableDeviceBackups(std::move(names));
    NotificationCenter::defaultCenter().post("ALL_DEVICE_DATA_AVAILABLE_FROM_ICLOUD");
    return true;
}

// The history files oldest first: their stamps sort as text in date order.
bool SugarSyncHelper::listDeviceFolder() {
    std::optional<std::string> main;
    {
        std::lock_guard lock(mutex_);
        main = mainFolderRef_;
    }
    auto entries = sugarSync().getFolderContent(main);
    if (!entries) return false;
    std::vector<std::string> files;
    for (const SugarSyncEntry& entry : *entries) {
        if (!entry.isFolder) files.push_back(entry.name);
    }
    std::sort(files.begin(), files.end());
    {
        std::lock_guard lock(mutex_);
        internalExistingFiles_ = std::move(*entries);
    }
    replaceExistingFiles(std::move(files));
    return true;
}

void SugarSyncHelper::loadAvailableDeviceBackups() {
    beginRequest();
    finish(listDeviceFolders());
}

void SugarSyncHelper::loadDefaultBackupDetails() {
    beginRequest();
    finish(listDeviceFolder());
}

std::optional<std::string> SugarSyncHelper::deviceRef(const std::string& deviceName) {
    std::lock_guard lock(mutex_);
    std::optional<std::string> found;
    if (internalAvailableDeviceBackups_) {
        for (const SugarSyncEntry& entry : *internalAvailableDeviceBackups_) {
            if (entry.isFolder && entry.name == deviceName) found = entry.ref;
        }
    }
    return found;
}

void SugarSyncHelper::loadBackupDetailsForDevice(const std::string& deviceName) {
    beginRequest();
    const auto ref = deviceRef(deviceName);
    if (!ref) {
        SH_LOG("Couldn't find data for <{}>", deviceName);
        failWith("Couldn't find data for <" + deviceName + ">");
        return performFailureSelector();
    }
    const auto entries = sugarSync().getFolderContent(ref);
    if (!entries) return performFailureSelector();
    std::vector<std::string> names;
    for (auto entry = entries->rbegin(); entry != entries->rend(); ++entry) names.push_back(entry->name);
    performSuccessSelector(std::move(names));
}

void SugarSyncHelper::loadMostRecentBackupSession() {
    beginRequest();
    bool listed = false;
    {
        std::lock_guard lock(mutex_);
        listed = internalAvailableDeviceBackups_ && internalExistingFiles_;
    }
    if (!listed && sugarSync().isLoggedIn() && !loadListings()) return;
    fetchNewestHistoryFile();
}

bool SugarSyncHelper::fetchHistoryFile(const std::string& name) {
    const auto fileData = findFileRefForName(name, true);
    if (!fileData) return failWith("Couldn't find backup data FILE with name <" + name + ">");
    return fetch(*fileData, name).has_value();
}

std::optional<std::string> SugarSyncHelper::fetch(const std::string& fileData, const std::string& name) {
    const auto path = temporaryPathOf(name);
    if (!path || !sugarSync().downloadFileData(fileData, *path)) return std::nullopt;
    return path;
}

std::optional<std::string> SugarSyncHelper::findFolderRefForName(const std::string& name) {
    std::lock_guard lock(mutex_);
    if (internalExistingFiles_) {
        for (auto entry = internalExistingFiles_->rbegin(); entry != internalExistingFiles_->rend(); ++entry) {
            if (entry->isFolder && entry->name == name) return entry->ref;
        }
    }
    return std::nullopt;
}

std::optional<std::string> SugarSyncHelper::findFileRefForName(const std::string& name, bool forData) {
    std::lock_guard lock(mutex_);
    const auto search = [&](const std::vector<SugarSyncEntry>& entries) -> std::optional<std::string> {
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            const std::string& wanted = forData ? entry->fileData : entry->ref;
            if (!entry->isFolder && entry->name == name && !wanted.empty()) return wanted;
        }
        return std::nullopt;
    };
    if (auto found = search(preloadedEntries_)) return found;
    return internalExistingFiles_ ? search(*internalExistingFiles_) : std::nullopt;
}

void SugarSyncHelper::addEntry(SugarSyncEntry entry) {
    std::lock_guard lock(mutex_);
    if (!internalExistingFiles_) internalExistingFiles_.emplace();
    internalExistingFiles_->push_back(std::move(entry));
}

void SugarSyncHelper::forgetPreloadedEntries() {
    forgetPrefetchedSession();
    std::lock_guard lock(mutex_);
    preloadedEntries_.clear();
}

}  // namespace stowhaven
