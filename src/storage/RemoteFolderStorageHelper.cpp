#include "storage/RemoteFolderStorageHelper.h"

#include "core/BackupSession.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/FileModes.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageLayout.h"

#include <algorithm>
#include <filesystem>

namespace stowhaven {

namespace {

std::string lastPathComponent(const std::string& path) { return std::filesystem::path(path).filename().string(); }

std::string temporaryPath(const std::string& name) { return TemporaryDirectory::path() + "/" + name; }

std::vector<std::string> folderNames(const std::vector<RemoteEntry>& entries) {
    std::vector<std::string> names;
    for (const RemoteEntry& entry : entries) {
        if (entry.isDirectory && !entry.isSymbolicLink) names.push_back(entry.name);
    }
    return names;
}

// The history files of a listing, oldest first: their stamps sort as text in date order.
std::vector<std::string> historyFileNames(const std::vector<RemoteEntry>& entries) {
    std::vector<std::string> names;
    for (const RemoteEntry& entry : entries) {
        if (!entry.isDirectory && !entry.isSymbolicLink) names.push_back(entry.name);
    }
    names = StorageLayout::existingFiles(names);
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

RemoteFolderStorageHelper::RemoteFolderStorageHelper(StorageType type, std::unique_ptr<RemoteFolders> server)
    : AbstractStorageHelper(std::move(server)), type_(type) {}

RemoteFolders& RemoteFolderStorageHelper::server() const { return static_cast<RemoteFolders&>(*wrapper()); }

std::string RemoteFolderStorageHelper::homeDirectory() const {
    return StorageLayout::deviceDirectory(rootDirectory(), Supervisor::shared().deviceName());
}

std::string RemoteFolderStorageHelper::sessionDirectory(Date date) const {
    return StorageLayout::sessionDirectory(homeDirectory(), date);
}

void RemoteFolderStorageHelper::finish(bool succeeded, const HookObject& object) {
    if (succeeded) {
        performSuccessSelector(object);
    } else {
        performFailureSelector();
    }
}

bool RemoteFolderStorageHelper::start() {
    initialized_ = false;
    clearExistingFiles();
    SH_LOG("{}", server().description());
    if (const auto missing = missingCredentials()) {
        server().setErrorMessage(*missing);
        return false;
    }
    // A root that can't be listed is made, unless the server refused the login itself.
    if (!server().listDirectory(rootDirectory())) {
        if (!server().isLoggedIn()) return false;
        SH_LOG("<{}> doesn't exist! Will try to create it...", rootDirectory());
        if (!server().createDirectoryWithParents(homeDirectory())) return false;
        SH_LOG("<{}> created!", homeDirectory());
    }
    if (!loadDeviceFolders() || !loadHistoryFiles()) return false;
    initialized_ = true;
    return true;
}

bool RemoteFolderStorageHelper::loadDeviceFolders() {
    const auto entries = server().listDirectory(rootDirectory());
    if (!entries) return false;
    setAvailableDeviceBackups(folderNames(*entries));
    takeDeviceFolders();
    std::vector<std::string> devices = availableDeviceBackups();
    const std::string& device = Supervisor::shared().deviceName();
    if (std::find(devices.begin(), devices.end(), device) != devices.end()) return true;
    // A server may keep a folder out of the listing that it has all the same.
    if (!server().createDirectory(homeDirectory()) && !server().listDirectory(homeDirectory())) return false;
    devices.push_back(device);
    setAvailableDeviceBackups(std::move(devices));
    return true;
}

bool RemoteFolderStorageHelper::loadHistoryFiles() {
    const auto entries = server().listDirectory(homeDirectory());
    if (!entries) return false;
    setExistingFiles(historyFileNames(*entries));
    return true;
}

void RemoteFolderStorageHelper::fallBackToLocalStorage() {
    SH_LOG("errorMessage:{}", errorMessage().value_or("(null)"));
    server().disconnect();
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.currentStorageType() == type_) supervisor.setStorageToLocal();
}

void RemoteFolderStorageHelper::connect() {
    if (!start()) {
        fallBackToLocalStorage();
        return;
    }
    Supervisor::shared().setStorageTo(type_);
    NotificationCenter::defaultCenter().post(notificationPrefix() + "_CONNECTED");
}

void RemoteFolderStorageHelper::disconnect() {
    server().disconnect();
    Supervisor::shared().setStorageToLocal();
    NotificationCenter::defaultCenter().post(notificationPrefix() + "_DISCONNECTED");
    SH_LOG("Disconnected!");
}

bool RemoteFolderStorageHelper::isLoggedIn() {
    return Platform::current().reachability().isConnectedToNetwork() && server().isLoggedIn();
}

// Both read the server again, as the start does.
void RemoteFolderStorageHelper::flushCache() { resetAll(); }

void RemoteFolderStorageHelper::resetAll() {
    if (!start()) fallBackToLocalStorage();
}

void RemoteFolderStorageHelper::loadAvailableDeviceBackups() {
    SH_LOG("Reloading available device backups...");
    finish(loadDeviceFolders());
}

// Device names come from listings and from the user: each must name one folder of the root.
bool RemoteFolderStorageHelper::isDeviceFolder(const std::string& name) const {
    if (isOneFileName(name)) return true;
    server().setErrorMessage("<" + name + "> names no device folder");
    return false;
}

void RemoteFolderStorageHelper::loadBackupDetailsForDevice(const std::string& deviceName) {
    if (!isDeviceFolder(deviceName)) return performFailureSelector();
    const auto entries = server().listDirectory(StorageLayout::deviceDirectory(rootDirectory(), deviceName));
    finish(entries.has_value(), entries ? HookObject(historyFileNames(*entries)) : HookObject());
}

void RemoteFolderStorageHelper::loadDefaultBackupDetails() { finish(loadHistoryFiles()); }

bool RemoteFolderStorageHelper::fetchHistoryFile(const std::string& name) {
    return server().getFile(StorageLayout::deviceDirectory(homeDirectory(), name), temporaryPath(name));
}

void RemoteFolderStorageHelper::loadMostRecentBackupSession() {
    const auto newest = StorageLayout::mostRecent(existingFiles());
    if (!newest) return;
    SH_LOG("Loading <{}> into <{}>...", *newest, TemporaryDirectory::path());
    fetchHistoryFile(*newest);
}

void RemoteFolderStorageHelper::loadFile(const std::string& name, Date date,
                                         const std::optional<std::string>& subDirectory) {
    std::string folder = sessionDirectory(date);
    if (subDirectory) folder = StorageLayout::dataDirectory(folder, *subDirectory);
    const std::string target = temporaryPath(lastPathComponent(name));
    if (!server().getFile(StorageLayout::dataDirectory(folder, name), target)) {
        performFailureSelector();
        return;
    }
    // The hooks stay for the next file of the same request.
    callSuccessSelectorKeepingIt(target);
}

void RemoteFolderStorageHelper::createDirectoryDated(Date date) {
    finish(server().createDirectory(sessionDirectory(date)));
}

void RemoteFolderStorageHelper::createDirectory(const std::string& directory, Date date) {
    finish(server().createDirectory(StorageLayout::dataDirectory(sessionDirectory(date), directory)));
}

// The file goes up under a name no listing takes for a session, and takes its own once
// whole, so that a transfer cut short never stands as a session. One of the same stamp is
// not replaced.
void RemoteFolderStorageHelper::uploadBackupHistory(const std::string& historyText, Date date) {
    const std::string name = StorageLayout::historyFileName(date);
    const std::string stored = StorageLayout::deviceDirectory(homeDirectory(), name);
    // No retry would change that.
    if (const auto files = existingFiles(); std::find(files.begin(), files.end(), name) != files.end()) {
        server().setErrorMessage("<" + stored + "> exists already");
        performFailureSelector();
        return;
    }
    if (retryCount() == 0) setRetrySelector([=, this] { uploadBackupHistory(historyText, date); });
    SH_LOG("Backup data size: {:.2f}Kb", static_cast<double>(historyText.size()) / 1024);
    const std::string partial = temporaryPath(name + ".part");
    std::string error;
    bool succeeded = false;
    if (!FileManager::writeFile(partial, historyText, &error, FileModes::kPrivateFile)) {
        server().setErrorMessage(error);
    } else {
        succeeded = server().uploadFromPath(partial, homeDirectory()) && server().rename(stored + ".part", stored);
    }
    FileManager::removeItem(partial);
    if (succeeded) addExistingFile(name);
    finish(succeeded);
}

void RemoteFolderStorageHelper::uploadFile(const std::string& path, Date date,
                                           const std::optional<std::string>& directory) {
    const std::string folder = sessionDirectory(date);
    finish(server().uploadFromPath(path, directory ? StorageLayout::dataDirectory(folder, *directory) : folder));
}

// The history file goes first: a session folder left behind by a failure is no session.
void RemoteFolderStorageHelper::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    if (!session || !session->sessionDate()) {
        server().setErrorMessage("No session to delete");
        performFailureSelector();
        return;
    }
    const Date date = *session->sessionDate();
    const std::string name = StorageLayout::historyFileName(date);
    if (!server().deleteFile(StorageLayout::deviceDirectory(homeDirectory(), name))) {
        performFailureSelector();
        return;
    }
    removeExistingFile(name);
    const auto sessions = server().listDirectory(homeDirectory());
    const std::string stamp = StorageLayout::stamp(date);
    const bool hasFolder =
        sessions && std::any_of(sessions->begin(), sessions->end(), [&stamp](const RemoteEntry& entry) {
            return entry.isDirectory && entry.name == stamp;
        });
    if (hasFolder && !server().deleteTree(sessionDirectory(date))) {
        SH_LOG("Couldn't delete <{}>", sessionDirectory(date));
    }
    server().setErrorMessage(std::nullopt);
    performSuccessSelector();
}

void RemoteFolderStorageHelper::deleteBackupForDeviceId(const std::string& deviceName) {
    if (!movesDeviceFolders()) {
        SH_LOG("SHOULD BE DONE MANUALLY!");
        server().setErrorMessage("Device folders are deleted on the server itself");
        return performFailureSelector();
    }
    if (!isDeviceFolder(deviceName)) return performFailureSelector();
    finish(server().deleteTree(StorageLayout::deviceDirectory(rootDirectory(), deviceName)));
}

void RemoteFolderStorageHelper::moveFromPath(const std::string& from, const std::string& to) {
    if (!movesDeviceFolders()) {
        SH_LOG("SHOULD BE DONE MANUALLY!");
        server().setErrorMessage("Device folders are renamed on the server itself");
        return performFailureSelector();
    }
    if (!isDeviceFolder(from) || !isDeviceFolder(to)) return performFailureSelector();
    finish(server().rename(StorageLayout::deviceDirectory(rootDirectory(), from),
                           StorageLayout::deviceDirectory(rootDirectory(), to)));
}

}  // namespace stowhaven
