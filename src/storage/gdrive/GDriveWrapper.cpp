#include "storage/gdrive/GDriveWrapper.h"

#include "core/Supervisor.h"
#include "platform/AsciiCase.h"
#include "platform/Log.h"
#include "storage/StorageLayout.h"
#include "storage/gdrive/GDriveQuery.h"

#include <algorithm>
#include <filesystem>

namespace stowhaven {

namespace {

constexpr double kKilobytesPerByte = 0.0009765625;
// The quota of an account without a limit.
constexpr double kUnlimitedQuota = 2147483647;
// Discovery's rounds over the product folder: a new device's folder is made under the
// device's identifier, then renamed to the device's name, each followed by a new listing.
constexpr int kDiscoveryRounds = 3;

bool isHistoryFile(const GDriveFile& file) {
    return !file.isFolder() && file.name.ends_with(StorageLayout::kHistoryFileSuffix);
}

std::vector<std::string> historyNames(const std::vector<GDriveFile>& files) {
    std::vector<std::string> names;
    for (const GDriveFile& file : files) {
        if (isHistoryFile(file)) names.push_back(file.name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

GDriveWrapper::GDriveWrapper() : client_(GDriveService::fromEnvironment(), *this) {}

bool GDriveWrapper::fail(const std::string& message) {
    SH_LOG("{}", message);
    setErrorMessage(message);
    return false;
}

std::optional<GDriveFile> GDriveWrapper::existing(const std::map<std::string, GDriveFile>& map,
                                                  const std::string& name) const {
    std::lock_guard lock(mutex_);
    const auto found = map.find(name);
    if (found == map.end()) return std::nullopt;
    return found->second;
}

bool GDriveWrapper::isLoggedIn() const { return initialized_ && GDriveTokens::storedRefreshToken().has_value(); }

std::string GDriveWrapper::username() const {
    std::lock_guard lock(mutex_);
    return about_ ? about_->emailAddress : std::string();
}

bool GDriveWrapper::refreshFreeSpace() {
    auto about = client_.about();
    if (!about) return false;
    const double total = about->limit.value_or(kUnlimitedQuota) * kKilobytesPerByte;
    const double used = about->usageInDrive * kKilobytesPerByte;
    SH_LOG("Quota: {:.3f}GB ({:.3f}GB in Trash) used out of {:.3f}GB", used * kKilobytesPerByte * kKilobytesPerByte,
           about->usageInDriveTrash * kKilobytesPerByte * kKilobytesPerByte * kKilobytesPerByte,
           total * kKilobytesPerByte * kKilobytesPerByte);
    std::lock_guard lock(mutex_);
    about_ = std::move(about);
    return true;
}

double GDriveWrapper::freeSpace() const {
    std::lock_guard lock(mutex_);
    if (!about_) return 0;
    return (about_->limit.value_or(kUnlimitedQuota) - about_->usageInDrive) * kKilobytesPerByte;
}

bool GDriveWrapper::flushCache() {
    initialized_ = false;
    {
        std::lock_guard lock(mutex_);
        rootDirectoryObject_.reset();
        homeDirectoryObject_.reset();
        internalAvailableDeviceBackups_.clear();
        internalExistingFiles_.clear();
        createdFolders_.clear();
        directoryCache_.clear();
    }
    if (!refreshFreeSpace()) return false;
    const auto root = initializeRootDirectory();
    const auto home = root ? initializeHomeDirectory(*root) : std::nullopt;
    if (!home) return false;
    {
        std::lock_guard lock(mutex_);
        rootDirectoryObject_ = root;
        homeDirectoryObject_ = home;
    }
    if (!loadCurrentDeviceBackups()) return false;
    initialized_ = true;
    return true;
}

std::optional<GDriveFile> GDriveWrapper::initializeRootDirectory() {
    const std::string name(StorageLayout::kBaseDirectoryName);
    auto folders = client_.list(GDriveQuery::folderNamed(name));
    if (folders && folders->empty()) {
        const auto made = client_.createFolder(name, std::nullopt);
        if (!made) {
            SH_LOG("Error <{}> while creating ROOT directory!", errorMessage().value_or("(null)"));
            return std::nullopt;
        }
        folders = client_.list(GDriveQuery::folderNamed(name));
    }
    if (!folders) {
        SH_LOG("Error <{}> while listing ROOT directory!", errorMessage().value_or("(null)"));
        return std::nullopt;
    }
    if (folders->empty()) {
        fail("The <Stowhaven> folder made can't be found");
        return std::nullopt;
    }
    return folders->back();
}

bool GDriveWrapper::listDeviceFolders(const GDriveFile& root) {
    const auto folders = client_.list(GDriveQuery::foldersIn(root.id));
    if (!folders) return false;
    std::lock_guard lock(mutex_);
    internalAvailableDeviceBackups_.clear();
    for (const GDriveFile& folder : *folders) {
        if (folder.isFolder()) internalAvailableDeviceBackups_.emplace(folder.name, folder);
    }
    return true;
}

std::optional<GDriveFile> GDriveWrapper::initializeHomeDirectory(const GDriveFile& root) {
    const Supervisor& supervisor = Supervisor::shared();
    const std::string& deviceName = supervisor.deviceName();
    const std::string& deviceUID = supervisor.deviceUID();
    for (int round = 0; round < kDiscoveryRounds; ++round) {
        if (!listDeviceFolders(root)) return std::nullopt;
        std::optional<GDriveFile> home;
        std::optional<GDriveFile> old;
        {
            std::lock_guard lock(mutex_);
            for (const auto& [name, folder] : internalAvailableDeviceBackups_) {
                if (equalsIgnoringAsciiCase(name, deviceName)) home = folder;
                if (equalsIgnoringAsciiCase(name, deviceUID)) old = folder;
            }
        }
        if (home) return home;
        if (old) {
            SH_LOG("Migrating from data directory from {} to {}...", old->name, deviceName);
            if (!moveDeviceBackup(old->name, deviceName)) {
                SH_LOG("FAILED to migrate from data directory from {} to {}. Error: {}!", old->name, deviceName,
                       errorMessage().value_or("(null)"));
                return std::nullopt;
            }
            SH_LOG("Migrated from data directory from {} to {}!", old->name, deviceName);
        } else if (!client_.createFolder(deviceUID, root.id)) {
            SH_LOG("Error <{}> while creating <{}/{}> directory!", errorMessage().value_or("(null)"), root.name,
                   deviceUID);
            return std::nullopt;
        }
    }
    fail("The folder of <" + deviceName + "> can't be found");
    return std::nullopt;
}

std::optional<std::vector<std::string>> GDriveWrapper::loadAvailableDeviceBackups() {
    std::optional<GDriveFile> root;
    {
        std::lock_guard lock(mutex_);
        root = rootDirectoryObject_;
    }
    if (!root) {
        fail("Google Drive isn't ready: the <Stowhaven> folder is unknown");
        return std::nullopt;
    }
    if (!listDeviceFolders(*root)) return std::nullopt;
    std::lock_guard lock(mutex_);
    std::vector<std::string> names;
    for (const auto& [name, folder] : internalAvailableDeviceBackups_) names.push_back(name);
    return names;
}

std::optional<std::vector<std::string>> GDriveWrapper::loadCurrentDeviceBackups() {
    std::optional<GDriveFile> home;
    {
        std::lock_guard lock(mutex_);
        home = homeDirectoryObject_;
    }
    if (!home) {
        fail("Google Drive isn't ready: the device's folder is unknown");
        return std::nullopt;
    }
    const auto files = client_.list(GDriveQuery::childrenOf(home->id));
    if (!files) {
        SH_LOG("Error <{}> while listing <{}> directory!", errorMessage().value_or("(null)"), home->name);
        return std::nullopt;
    }
    std::lock_guard lock(mutex_);
    internalExistingFiles_.clear();
    for (const GDriveFile& file : *files) {
        if (file.isFolder() || isHistoryFile(file)) internalExistingFiles_.emplace(file.name, file);
    }
    return historyNames(*files);
}

std::optional<std::vector<std::string>> GDriveWrapper::getDeviceBackupData(const std::string& deviceName) {
    const auto device = existing(internalAvailableDeviceBackups_, deviceName);
    if (!device) {
        fail("Can't find <" + deviceName + ">");
        return std::nullopt;
    }
    const auto files = client_.list(GDriveQuery::childrenOf(device->id));
    if (!files) return std::nullopt;
    return historyNames(*files);
}

std::optional<GDriveFile> GDriveWrapper::folderToWriteIn(const std::optional<std::string>& name) {
    std::optional<GDriveFile> folder;
    {
        std::lock_guard lock(mutex_);
        folder = homeDirectoryObject_;
        if (name) {
            const auto found = createdFolders_.find(*name);
            folder = found != createdFolders_.end() ? std::optional(found->second) : std::nullopt;
        }
    }
    if (!folder) fail("Can't find <" + name.value_or("the device's folder") + ">");
    return folder;
}

bool GDriveWrapper::createDirectory(const std::string& name, const std::optional<std::string>& parentName) {
    const auto parent = folderToWriteIn(parentName);
    if (!parent) return false;
    const auto made = client_.createFolder(name, parent->id);
    if (!made) {
        SH_LOG("Error <{}> while creating folder <{}>", errorMessage().value_or("(null)"), name);
        return false;
    }
    std::lock_guard lock(mutex_);
    createdFolders_.insert_or_assign(made->name, *made);
    if (!parentName) internalExistingFiles_.insert_or_assign(made->name, *made);
    return true;
}

bool GDriveWrapper::uploadFromPath(const std::string& localPath, const std::optional<std::string>& destination) {
    const std::string name = std::filesystem::path(localPath).filename().string();
    const auto parent = folderToWriteIn(destination);
    if (!parent) return false;
    // Drive keeps any number of files of one name: a name taken is refused here.
    const auto taken = client_.list(GDriveQuery::childNamed(parent->id, name));
    if (!taken) return false;
    const auto sameName = [&](const GDriveFile& file) { return file.name == name; };
    if (std::any_of(taken->begin(), taken->end(), sameName))
        return fail("<" + name + "> exists already in <" + parent->name + ">");
    const auto sent = client_.upload(localPath, name, parent->id);
    if (!sent) {
        SH_LOG("Error <{}> while uploading <{}> to <{}>", errorMessage().value_or("(null)"), localPath, parent->name);
        return false;
    }
    if (!destination && (sent->isFolder() || isHistoryFile(*sent))) {
        std::lock_guard lock(mutex_);
        internalExistingFiles_.insert_or_assign(sent->name, *sent);
    }
    return true;
}

bool GDriveWrapper::loadDirectoryCache(const std::string& stamp) {
    {
        std::lock_guard lock(mutex_);
        if (directoryCache_.contains(stamp)) return true;
    }
    const auto session = existing(internalExistingFiles_, stamp);
    if (!session || !session->isFolder()) return fail("Can't find <" + stamp + ">");
    const auto children = client_.list(GDriveQuery::childrenOf(session->id));
    if (!children) {
        SH_LOG("Error <{}> while listing <{}> directory!", errorMessage().value_or("(null)"), stamp);
        return false;
    }
    std::map<std::string, GDriveFile> files;
    for (const GDriveFile& child : *children) {
        files.emplace(child.name, child);
        if (!child.isFolder()) continue;
        const auto inner = client_.list(GDriveQuery::childrenOf(child.id));
        if (!inner) {
            SH_LOG("Error <{}> while listing <{}/{}> directory!", errorMessage().value_or("(null)"), stamp, child.name);
            return false;
        }
        for (const GDriveFile& file : *inner) files.emplace(child.name + "/" + file.name, file);
    }
    std::lock_guard lock(mutex_);
    directoryCache_.insert_or_assign(stamp, std::move(files));
    return true;
}

bool GDriveWrapper::getFile(const std::string& relativePath, const std::optional<std::string>& stamp,
                            const std::string& localPath) {
    std::optional<GDriveFile> file;
    {
        std::lock_guard lock(mutex_);
        if (stamp) {
            const auto session = directoryCache_.find(*stamp);
            if (session != directoryCache_.end()) {
                const auto found = session->second.find(relativePath);
                if (found != session->second.end()) file = found->second;
            }
        } else if (const auto found = internalExistingFiles_.find(relativePath);
                   found != internalExistingFiles_.end()) {
            file = found->second;
        }
    }
    if (!file || file->isFolder()) return fail("Can't find <" + relativePath + ">");
    if (!client_.download(*file, localPath)) {
        SH_LOG("Error <{}> while downloading <{}>", errorMessage().value_or("(null)"), relativePath);
        return false;
    }
    return true;
}

bool GDriveWrapper::deleteDataAtPath(const std::string& stamp) {
    const std::string name = stamp + std::string(StorageLayout::kHistoryFileSuffix);
    const auto history = existing(internalExistingFiles_, name);
    if (!history) return fail("Can't find <" + name + ">");
    SH_LOG("Deleting <{}>...", name);
    if (!client_.deleteFile(history->id)) {
        SH_LOG("Error <{}> while deleting <{}>", errorMessage().value_or("(null)"), name);
        return false;
    }
    {
        std::lock_guard lock(mutex_);
        internalExistingFiles_.erase(name);
        directoryCache_.erase(stamp);
    }
    // The session's folder goes too; a session without one, or a folder that stays, is no
    // failure: the session is gone with its history file.
    if (const auto folder = existing(internalExistingFiles_, stamp); folder && folder->isFolder()) {
        if (client_.deleteFile(folder->id)) {
            std::lock_guard lock(mutex_);
            internalExistingFiles_.erase(stamp);
        } else {
            SH_LOG("Error <{}> while deleting <{}>", errorMessage().value_or("(null)"), stamp);
            setErrorMessage(std::nullopt);
        }
    }
    SH_LOG("<{}> deleted!", name);
    return true;
}

bool GDriveWrapper::deleteDeviceBackup(const std::string& deviceName) {
    const auto device = existing(internalAvailableDeviceBackups_, deviceName);
    if (!device) return fail("Can't find <" + deviceName + ">");
    if (!client_.deleteFile(device->id)) return false;
    std::lock_guard lock(mutex_);
    internalAvailableDeviceBackups_.erase(deviceName);
    return true;
}

bool GDriveWrapper::moveDeviceBackup(const std::string& from, const std::string& to) {
    auto device = existing(internalAvailableDeviceBackups_, from);
    if (!device) return fail("Can't find <" + from + ">");
    if (!client_.rename(device->id, to)) {
        SH_LOG("Error <{}> while moving <Stowhaven/{}> to <Stowhaven/{}> directory!", errorMessage().value_or("(null)"),
               from, to);
        return false;
    }
    device->name = to;
    std::lock_guard lock(mutex_);
    internalAvailableDeviceBackups_.erase(from);
    internalAvailableDeviceBackups_.insert_or_assign(to, *device);
    return true;
}

void GDriveWrapper::disconnect() {
    client_.tokens().revoke();
    initialized_ = false;
    std::lock_guard lock(mutex_);
    rootDirectoryObject_.reset();
    homeDirectoryObject_.reset();
}

void GDriveWrapper::unlink() {
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(), GDriveTokens::kRefreshTokenKey);
    SH_LOG("Unlinked!");
}

}  // namespace stowhaven
