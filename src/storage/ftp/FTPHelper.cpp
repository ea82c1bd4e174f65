#include "storage/ftp/FTPHelper.h"

#include "core/BackupSession.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/FileModes.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/StorageLayout.h"
#include "storage/ftp/FTPWrapper.h"

#include <algorithm>
#include <filesystem>

namespace stowhaven {

namespace {

std::string lastPathComponent(const std::string& path) { return std::filesystem::path(path).filename().string(); }

std::string temporaryPath(const std::string& name) { return TemporaryDirectory::path() + "/" + name; }

// The names of a listing's entries that are folders.
std::vector<std::string> folderNames(const std::vector<FtpEntry>& entries) {
    std::vector<std::string> names;
    for (const FtpEntry& entry : entries) {
        if (entry.isDirectory && !entry.isSymbolicLink) names.push_back(entry.name);
    }
    return names;
}

// The history files of a listing, oldest first: their stamps sort as text in date order.
std::vector<std::string> historyFileNames(const std::vector<FtpEntry>& entries) {
    std::vector<std::string> names;
    for (const FtpEntry& entry : entries) {
        if (!entry.isDirectory && !entry.isSymbolicLink) names.push_back(entry.name);
    }
    names = StorageLayout::existingFiles(names);
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

std::shared_ptr<FTPHelper> FTPHelper::createFTPHelper() {
    StorageEngines::registerFactory(StorageType::FTP, [] {
        auto helper = std::make_shared<FTPHelper>(FTPCredentials::current());
        if (Supervisor::shared().isStorageFTP()) helper->connect();
        return helper;
    });
    return std::dynamic_pointer_cast<FTPHelper>(StorageEngines::create(StorageType::FTP));
}

FTPHelper::FTPHelper(FTPCredentials credentials)
    : AbstractStorageHelper(std::make_unique<FTPWrapper>(credentials.normalized())) {}

FTPWrapper& FTPHelper::ftp() const { return static_cast<FTPWrapper&>(*wrapper()); }

std::string FTPHelper::rootDirectory() const { return ftp().credentials().rootDirectory; }

std::string FTPHelper::homeDirectory() const {
    return ftp().credentials().homeDirectory(Supervisor::shared().deviceName());
}

std::string FTPHelper::sessionDirectory(Date date) const {
    return StorageLayout::sessionDirectory(homeDirectory(), date);
}

void FTPHelper::finish(bool succeeded, const HookObject& object) {
    if (succeeded) {
        performSuccessSelector(object);
    } else {
        performFailureSelector();
    }
}

bool FTPHelper::start() {
    initialized_ = false;
    clearExistingFiles();
    SH_LOG("{}", ftp().description());
    if (const auto missing = ftp().credentials().missingPart()) {
        ftp().setErrorMessage(*missing);
        return false;
    }
    // A root that can't be listed is made, unless the server refused the login itself.
    if (!ftp().listDirectory(rootDirectory())) {
        if (!ftp().isLoggedIn()) return false;
        SH_LOG("<{}> doesn't exist! Will try to create it...", rootDirectory());
        if (!ftp().createDirectoryWithParents(homeDirectory())) return false;
        SH_LOG("<{}> created!", homeDirectory());
    }
    if (!loadDeviceFolders() || !loadHistoryFiles()) return false;
    initialized_ = true;
    return true;
}

bool FTPHelper::loadDeviceFolders() {
    const auto entries = ftp().listDirectory(rootDirectory());
    if (!entries) return false;
    setAvailableDeviceBackups(folderNames(*entries));
    migrateDeviceDirectory();
    std::vector<std::string> devices = availableDeviceBackups();
    const std::string& device = Supervisor::shared().deviceName();
    if (std::find(devices.begin(), devices.end(), device) != devices.end()) return true;
    // A server may keep a folder out of the listing that it has all the same.
    if (!ftp().createDirectory(homeDirectory()) && !ftp().listDirectory(homeDirectory())) return false;
    devices.push_back(device);
    setAvailableDeviceBackups(std::move(devices));
    return true;
}

bool FTPHelper::loadHistoryFiles() {
    const auto entries = ftp().listDirectory(homeDirectory());
    if (!entries) return false;
    setExistingFiles(historyFileNames(*entries));
    return true;
}

void FTPHelper::fallBackToLocalStorage() {
    SH_LOG("errorMessage:{}", errorMessage().value_or("(null)"));
    ftp().disconnect();
    Supervisor& supervisor = Supervisor::shared();
    if (supervisor.isStorageFTP()) supervisor.setStorageToLocal();
}

void FTPHelper::connect() {
    if (!start()) {
        fallBackToLocalStorage();
        return;
    }
    Supervisor::shared().setStorageToFTP();
    NotificationCenter::defaultCenter().post("FTP_CONNECTED");
}

void FTPHelper::disconnect() {
    ftp().disconnect();
    Supervisor::shared().setStorageToLocal();
    NotificationCenter::defaultCenter().post("FTP_DISCONNECTED");
    SH_LOG("Disconnected!");
}

bool FTPHelper::isLoggedIn() { return Platform::current().reachability().isConnectedToNetwork() && ftp().isLoggedIn(); }

std::string FTPHelper::accountName() { return "ftp://" + ftp().credentials().host; }

// Both read the server again, as the start does.
void FTPHelper::flushCache() { resetAll(); }

void FTPHelper::resetAll() {
    if (!start()) fallBackToLocalStorage();
}

void FTPHelper::loadAvailableDeviceBackups() {
    SH_LOG("Reloading available device backups...");
    finish(loadDeviceFolders());
}

void FTPHelper::loadBackupDetailsForDevice(const std::string& deviceName) {
    if (!isDeviceFolder(deviceName)) return performFailureSelector();
    const auto entries = ftp().listDirectory(StorageLayout::deviceDirectory(rootDirectory(), deviceName));
    finish(entries.has_value(), entries ? HookObject(historyFileNames(*entries)) : HookObject());
}

void FTPHelper::loadDefaultBackupDetails() { finish(loadHistoryFiles()); }

bool FTPHelper::fetchHistoryFile(const std::string& name) {
    return ftp().getFile(StorageLayout::deviceDirectory(homeDirectory(), name), temporaryPath(name));
}

void FTPHelper::loadMostRecentBackupSession() {
    const auto newest = StorageLayout::mostRecent(existingFiles());
    if (!newest) return;
    SH_LOG("Loading <{}> into <{}>...", *newest, TemporaryDirectory::path());
    fetchHistoryFile(*newest);
}

void FTPHelper::loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) {
    std::string folder = sessionDirectory(date);
    if (subDirectory) folder = StorageLayout::dataDirectory(folder, *subDirectory);
    const std::string target = temporaryPath(lastPathComponent(name));
    if (!ftp().getFile(StorageLayout::dataDirectory(folder, name), target)) {
        performFailureSelector();
        return;
    }
    // The hooks stay for the next file of the same request.
    callSuccessSelectorKeepingIt(target);
}

void FTPHelper::createDirectoryDated(Date date) { finish(ftp().createDirectory(sessionDirectory(date))); }

void FTPHelper::createDirectory(const std::string& directory, Date date) {
    finish(ftp().createDirectory(StorageLayout::dataDirectory(sessionDirectory(date), directory)));
}

// The file goes up under a name no listing takes for a session, and takes its own once
// whole, so that a transfer cut short never stands as a session. One of the same stamp is
// not replaced.
void FTPHelper::uploadBackupHistory(const std::string& historyText, Date date) {
    const std::string name = StorageLayout::historyFileName(date);
    const std::string stored = StorageLayout::deviceDirectory(homeDirectory(), name);
    // No retry would change that.
    if (const auto files = existingFiles(); std::find(files.begin(), files.end(), name) != files.end()) {
        ftp().setErrorMessage("<" + stored + "> exists already");
        performFailureSelector();
        return;
    }
    if (retryCount() == 0) setRetrySelector([=, this] { uploadBackupHistory(historyText, date); });
    const std::string partial = temporaryPath(name + ".part");
    std::string error;
    bool succeeded = false;
    if (!FileManager::writeFile(partial, historyText, &error, FileModes::kPrivateFile)) {
        ftp().setErrorMessage(error);
    } else {
        succeeded = ftp().uploadFromPath(partial, homeDirectory()) && ftp().rename(stored + ".part", stored);
    }
    FileManager::removeItem(partial);
    if (succeeded) addExistingFile(name);
    finish(succeeded);
}

void FTPHelper::uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) {
    const std::string folder = sessionDirectory(date);
    finish(ftp().uploadFromPath(path, directory ? StorageLayout::dataDirectory(folder, *directory) : folder));
}

// The history file goes first: a session folder left behind by a failure is no session.
void FTPHelper::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    if (!session || !session->sessionDate()) {
        ftp().setErrorMessage("No session to delete");
        performFailureSelector();
        return;
    }
    const Date date = *session->sessionDate();
    const std::string name = StorageLayout::historyFileName(date);
    if (!ftp().deleteFile(StorageLayout::deviceDirectory(homeDirectory(), name))) {
        performFailureSelector();
        return;
    }
    removeExistingFile(name);
    const auto sessions = ftp().listDirectory(homeDirectory());
    const std::string stamp = StorageLayout::stamp(date);
    const bool hasFolder = sessions && std::any_of(sessions->begin(), sessions->end(), [&stamp](const FtpEntry& entry) {
                               return entry.isDirectory && entry.name == stamp;
                           });
    if (hasFolder && !ftp().deleteTree(sessionDirectory(date))) SH_LOG("Couldn't delete <{}>", sessionDirectory(date));
    ftp().setErrorMessage(std::nullopt);
    performSuccessSelector();
}

// Device names come from listings and from the user: each must name one folder of the root.
bool FTPHelper::isDeviceFolder(const std::string& name) const {
    if (StorageLayout::isFolderName(name)) return true;
    ftp().setErrorMessage("<" + name + "> names no device folder");
    return false;
}

void FTPHelper::deleteBackupForDeviceId(const std::string& deviceName) {
    if (!isDeviceFolder(deviceName)) return performFailureSelector();
    finish(ftp().deleteTree(StorageLayout::deviceDirectory(rootDirectory(), deviceName)));
}

void FTPHelper::moveFromPath(const std::string& from, const std::string& to) {
    if (!isDeviceFolder(from) || !isDeviceFolder(to)) return performFailureSelector();
    finish(ftp().rename(StorageLayout::deviceDirectory(rootDirectory(), from),
                        StorageLayout::deviceDirectory(rootDirectory(), to)));
}

}  // namespace stowhaven
