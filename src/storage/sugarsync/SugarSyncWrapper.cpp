#include "storage/sugarsync/SugarSyncWrapper.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageLayout.h"
#include "storage/sugarsync/SugarSyncKeys.h"
#include "storage/sugarsync/SugarSyncXml.h"

namespace stowhaven {

namespace {

// A folder made is listed on the next pass; more passes mean the service doesn't keep it.
constexpr int kDiscoveryPasses = 3;
// A device folder holds sessions, which hold data folders: a listing deeper than this is no
// tree of ours (a folder listed inside itself).
constexpr int kDeepestDeletion = 8;

}  // namespace

SugarSyncWrapper::SugarSyncWrapper() : client_(SugarSyncService::fromEnvironment(), *this) {}

std::optional<std::pair<std::string, std::string>> SugarSyncWrapper::storedCredentials() {
    const Supervisor& supervisor = Supervisor::shared();
    const auto user = supervisor.lowLevelGetStringPreferencesDataForKey(SugarSyncKeys::kLogin);
    const auto password = supervisor.lowLevelGetStringPreferencesDataForKey(SugarSyncKeys::kPassword);
    if (!user || !password || textutil::trimmed(*user).empty() || textutil::trimmed(*password).empty()) {
        return std::nullopt;
    }
    return std::pair{textutil::trimmed(*user), textutil::trimmed(*password)};
}

bool SugarSyncWrapper::logIn(const std::string& user, const std::string& password, bool storing) {
    setErrorMessage(std::nullopt);
    if (!client_.session().logIn(user, password)) {
        setErrorMessage(client_.session().lastError().value_or("SugarSync refused the login"));
        SH_LOG("{}", *errorMessage());
        return false;
    }
    if (!storageUtilization()) {
        client_.session().logOut();
        return false;
    }
    if (storing) {
        Supervisor& supervisor = Supervisor::shared();
        supervisor.lowLevelStorePreferencesData(PlistValue(textutil::trimmed(user)), SugarSyncKeys::kLogin);
        supervisor.lowLevelStorePreferencesData(PlistValue(textutil::trimmed(password)), SugarSyncKeys::kPassword);
        if (const auto expiration = client_.session().expiration()) {
            supervisor.lowLevelStorePreferencesData(PlistValue(*expiration), SugarSyncKeys::kTokenExpirationDate);
        }
    }
    NotificationCenter::defaultCenter().post("SUGARSYNC_CONNECTED");
    return true;
}

double SugarSyncWrapper::freeSpace() const {
    std::lock_guard lock(mutex_);
    return limit_ - usage_;
}

bool SugarSyncWrapper::storageUtilization() {
    const auto user = client_.user();
    if (!user) return false;
    {
        std::lock_guard lock(mutex_);
        limit_ = user->limit;
        usage_ = user->usage;
        magicBriefcaseLink_ = user->magicBriefcase;
    }
    return retrieveBriefcaseContents();
}

bool SugarSyncWrapper::retrieveBriefcaseContents() {
    std::string briefcase;
    {
        std::lock_guard lock(mutex_);
        briefcase = magicBriefcaseLink_;
    }
    const std::string product(StorageLayout::kBaseDirectoryName);
    for (int pass = 0; pass < kDiscoveryPasses; ++pass) {
        auto contents = getFolderContent(briefcase);
        {
            std::lock_guard lock(mutex_);
            briefcaseContents_ = contents ? std::move(*contents) : std::vector<SugarSyncEntry>{};
        }
        if (!contents) return false;
        const auto productRef = getBriefcaseFolderRef(product);
        if (!productRef) {
            SH_LOG("'Stowhaven' folder doesn't exist => Creating it...");
            if (!createFolder(product, briefcase)) return false;
            continue;
        }
        SH_LOG("Found 'Stowhaven' folder...");
        return ensureDeviceFolder(*productRef);
    }
    setErrorMessage("SugarSync doesn't keep the 'Stowhaven' folder");
    return false;
}

// The first entry named after the device or its identifier wins, whichever it is.
bool SugarSyncWrapper::ensureDeviceFolder(const std::string& productRef) {
    const Supervisor& supervisor = Supervisor::shared();
    const std::string& deviceName = supervisor.deviceName();
    const std::string& deviceUID = supervisor.deviceUID();
    const auto entries = getFolderContent(productRef);
    if (!entries) return false;
    for (const SugarSyncEntry& entry : *entries) {
        if (entry.name == deviceName) {
            SH_LOG("Found <{}> under 'Stowhaven' folder!", deviceName);
            return true;
        }
        if (entry.name == deviceUID) {
            SH_LOG("Migrating from data directory from {} to {}...", deviceUID, deviceName);
            if (!renameRef(entry.ref, deviceName)) {
                SH_LOG("FAILED to migrate from data directory from {} to {}. Error: {}!", deviceUID, deviceName,
                       errorMessage().value_or("(null)"));
                return false;
            }
            SH_LOG("Migrated from data directory from {} to {}!", deviceUID, deviceName);
            return true;
        }
    }
    SH_LOG("Creating <{}> under 'Stowhaven' folder...", deviceName);
    return createFolder(deviceName, productRef).has_value();
}

std::optional<std::string> SugarSyncWrapper::getBriefcaseFolderRef(const std::string& displayName) {
    std::lock_guard lock(mutex_);
    if (briefcaseContents_.empty()) SH_LOG("Briefcase contents not set!");
    for (const SugarSyncEntry& entry : briefcaseContents_) {
        if (entry.isFolder && entry.displayName == displayName) return entry.ref;
    }
    SH_LOG("<{}> is not part of the Magic Briefcase!", displayName);
    return std::nullopt;
}

std::optional<std::vector<SugarSyncEntry>> SugarSyncWrapper::getFolderContent(const std::optional<std::string>& ref) {
    if (!ref || ref->empty()) {
        SH_LOG("Folder ref is NULL!");
        setErrorMessage("SugarSync isn't ready: the folder is unknown");
        return std::nullopt;
    }
    auto contents = client_.contents(*ref);
    if (!contents) return std::nullopt;
    return std::move(contents->entries);
}

std::optional<std::string> SugarSyncWrapper::createFolder(const std::string& name, const std::string& inFolderRef) {
    return client_.create(inFolderRef, SugarSyncXml::folder(name));
}

std::optional<std::string> SugarSyncWrapper::createFile(const std::string& name, const std::string& mediaType,
                                                        const std::string& inFolderRef) {
    return client_.create(inFolderRef, SugarSyncXml::file(name, mediaType));
}

bool SugarSyncWrapper::putDataPath(const std::string& path, const std::string& fileRef) {
    return client_.putData(path, fileRef);
}

bool SugarSyncWrapper::downloadFileData(const std::string& fileData, const std::string& path) {
    return client_.download(fileData, path);
}

bool SugarSyncWrapper::deleteRef(const std::string& ref, bool isFolder) { return deleteTree(ref, isFolder, 0); }

bool SugarSyncWrapper::deleteTree(const std::string& ref, bool isFolder, int depth) {
    if (isFolder && depth < kDeepestDeletion) {
        if (const auto children = getFolderContent(ref)) {
            for (const SugarSyncEntry& child : *children) deleteTree(child.ref, child.isFolder, depth + 1);
        }
    }
    return client_.remove(ref);
}

bool SugarSyncWrapper::renameRef(const std::string& ref, const std::string& name) {
    return client_.update(ref, SugarSyncXml::folder(name));
}

void SugarSyncWrapper::disconnect() {
    client_.session().logOut();
    unlink();
}

void SugarSyncWrapper::unlink() {
    Supervisor& supervisor = Supervisor::shared();
    for (const char* key : {SugarSyncKeys::kLogin, SugarSyncKeys::kPassword, SugarSyncKeys::kTokenExpirationDate}) {
        supervisor.lowLevelStorePreferencesData(PlistValue(), key);
    }
    SH_LOG("Unlinked!");
}

}  // namespace stowhaven
