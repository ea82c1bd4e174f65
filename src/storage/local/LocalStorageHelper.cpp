#include "storage/local/LocalStorageHelper.h"

#include "core/BackupSession.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/FileModes.h"
#include "platform/Log.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>

#include <filesystem>

namespace stowhaven {

namespace {

std::string lastPathComponent(const std::string& path) { return std::filesystem::path(path).filename().string(); }

// The relative paths of the files below FOLDER whose names end in ".stowhvn", folder by
// folder in name order, as the device's file system lists them. Links aren't followed.
void collectHistoryFiles(const std::string& folder, const std::string& relative, std::vector<std::string>& names) {
    for (const std::string& entry : FileManager::contentsOfDirectory(folder).value_or(std::vector<std::string>{})) {
        const std::string path = folder + "/" + entry;
        const std::string relativePath = relative.empty() ? entry : relative + "/" + entry;
        const auto attributes = FileManager::attributesOfItem(path);
        if (attributes && attributes->type == FileType::Directory) {
            collectHistoryFiles(path, relativePath, names);
        } else if (entry.ends_with(StorageLayout::kHistoryFileSuffix)) {
            names.push_back(relativePath);
        }
    }
}

// A history write that a kill cut short leaves its temporary file beside the history files;
// the folder may be one the user shares, so only those go.
void removeUnfinishedHistoryWrites(const std::string& folder) {
    FileManager::removeUnfinishedWrites(
        folder, [](const std::string& target) { return target.ends_with(StorageLayout::kHistoryFileSuffix); });
}

}  // namespace

std::shared_ptr<LocalStorageHelper> LocalStorageHelper::createLocalStorageHelper() {
    StorageEngines::registerFactory(StorageType::Local, [] { return std::make_shared<LocalStorageHelper>(); });
    return std::dynamic_pointer_cast<LocalStorageHelper>(StorageEngines::create(StorageType::Local));
}

// Local storage used to live in the media folder, and moves to the preferences folder. A
// failed move leaves the data behind, and the setting takes the new place all the same.
void LocalStorageHelper::settleStoragePath() {
    Supervisor& supervisor = Supervisor::shared();
    const std::string var = DeviceRoot::var();
    const std::string oldFolder = var + "/mobile/Media/Stowhaven";
    const std::string newFolder = var + "/mobile/Library/Preferences/Stowhaven";

    std::optional<std::string> path = supervisor.lowLevelGetStringPreferencesDataForKey("LocalStoragePath");
    if (path == oldFolder) {
        std::string error;
        if (FileManager::moveItem(oldFolder, newFolder, &error)) {
            SH_LOG("Data moved from <{0}/mobile/Media/Stowhaven> to <{0}/mobile/Library/Preferences/Stowhaven>!", var);
            if (FileManager::removeItem(oldFolder)) {
                SH_LOG("<{}/mobile/Media/Stowhaven> removed!", var);
            } else {
                SH_LOG("Couldn't remove <{}/mobile/Media/Stowhaven>!", var);
            }
        } else {
            SH_LOG(
                "Couldn't move data from <{0}/mobile/Media/Stowhaven> to <{0}/mobile/Library/Preferences/Stowhaven>. "
                "Error: {1}!",
                var, error);
        }
        path.reset();
    }
    if (!path) {
        supervisor.lowLevelStorePreferencesData(newFolder, "LocalStoragePath");
        path = supervisor.lowLevelGetStringPreferencesDataForKey("LocalStoragePath");
    }
    setLocalStoragePath(path.value_or(""));
}

LocalStorageHelper::LocalStorageHelper() { createStorageFolder(); }

std::string LocalStorageHelper::storagePath() { return localStoragePath(); }

std::optional<std::string> LocalStorageHelper::errorMessage() const {
    std::lock_guard lock(errorMutex_);
    return errorMessage_;
}

void LocalStorageHelper::setErrorMessage(std::optional<std::string> message) {
    std::lock_guard lock(errorMutex_);
    errorMessage_ = std::move(message);
}

void LocalStorageHelper::createStorageFolder() {
    const std::string folder = storagePath();
    if (FileManager::fileExists(folder)) {
        SH_LOG("Found <{}>!", folder);
        removeUnfinishedHistoryWrites(folder);
        return;
    }
    // A folder made here is the program's own; one found in place is left as it is (the
    // setting may name a folder the user shares), its sessions being private each.
    if (!folder.empty() && FileManager::createDirectory(folder, true) &&
        FileManager::setPermissions(folder, FileModes::kPrivateFolder)) {
        SH_LOG("<{}> created!", folder);
        return;
    }
    setErrorMessage(fmt::format("Couldn't create <{}>!", folder));
    // Without its folder the engine can't work: the last resort is the address book.
    if (Supervisor::shared().isStorageLocal()) Supervisor::shared().setStorageToAddressbook();
}

void LocalStorageHelper::flushCache() { clearExistingFiles(); }

void LocalStorageHelper::logMisuse() { SH_LOG("####### SHOULDN'T BE CALLED #########"); }

void LocalStorageHelper::loadAvailableDeviceBackups() { logMisuse(); }

void LocalStorageHelper::loadBackupDetailsForDevice(const std::string&) { logMisuse(); }

void LocalStorageHelper::deleteBackupForDeviceId(const std::string&) { logMisuse(); }

void LocalStorageHelper::moveFromPath(const std::string&, const std::string&) { logMisuse(); }

double LocalStorageHelper::freeSpace() { return Supervisor::shared().freeSpace(); }

void LocalStorageHelper::refreshFreeSpace() { Supervisor::shared().refreshFreeSpace(); }

bool LocalStorageHelper::copyToTemporaryFolder(const std::string& relativePath) {
    const std::string source = storagePath() + "/" + relativePath;
    const std::string target = TemporaryDirectory::path() + "/" + relativePath;
    if (!FileManager::fileExists(source)) {
        setErrorMessage(fmt::format("<{}> doesn't exist!", source));
        return false;
    }
    std::string error;
    FileManager::createDirectory(std::filesystem::path(target).parent_path().string(), true);
    if (FileManager::copyItem(source, target, &error)) return true;
    setErrorMessage(fmt::format("Error <{}> while copying file from <{}> to <{}>!", error, source, target));
    return false;
}

bool LocalStorageHelper::fetchHistoryFile(const std::string& name) { return copyToTemporaryFolder(name); }

void LocalStorageHelper::loadMostRecentBackupSession() {
    setErrorMessage(std::nullopt);
    std::vector<std::string> names;
    collectHistoryFiles(storagePath(), "", names);
    setExistingFiles(std::move(names));
    const auto newest = StorageLayout::mostRecent(existingFiles());
    if (!newest) {
        setErrorMessage(fmt::format("No file found in <{}>!", storagePath()));
        return;
    }
    // No hook: the caller reads the file from the temporary folder.
    copyToTemporaryFolder(*newest);
}

// Every history file again, known or not; the first that can't be copied ends the walk.
void LocalStorageHelper::retrieveRestOfBackupHistory() {
    setErrorMessage(std::nullopt);
    const auto receiver = sessionHistoryReceiver();
    for (const std::string& name : existingFiles()) {
        if (!copyToTemporaryFolder(name)) break;
        if (receiver) receiver->takeHistoryFile(TemporaryDirectory::path() + "/" + name);
    }
    NotificationCenter::defaultCenter().post("BACKUP_HISTORY_LOADED");
}

// The history file holds the user's key (enciphered with the built-in key) and is for root
// alone. A write that fails, a full disk say, is no stored session: it stays out of the
// list and the request fails, so that nothing counts it as a backup to keep. Nor does a
// session take the place of another of the same stamp: the earlier one stays.
void LocalStorageHelper::uploadBackupHistory(const std::string& historyText, Date date) {
    setErrorMessage(std::nullopt);
    SH_LOG("Backup data size: {:.2f}Kb", static_cast<double>(historyText.size()) / 1024);
    const std::string name = StorageLayout::historyFileName(date);
    const std::string path = storagePath() + "/" + name;
    std::string error;
    if (FileManager::fileExists(path)) {
        error = fmt::format("<{}> exists already", path);
    } else if (FileManager::writeFile(path, historyText, &error, FileModes::kPrivateFile)) {
        addExistingFile(name);
        performSuccessSelector();
        return;
    }
    SH_LOG("{}", error);
    setErrorMessage(error + "!");
    performFailureSelector();
}

// The session folder and the data folders in it are for root alone, each of them.
void LocalStorageHelper::createDirectoryForRequest(const std::string& relativePath) {
    setErrorMessage(std::nullopt);
    std::string error;
    if (FileManager::createDirectory(storagePath() + "/" + relativePath, true, &error) &&
        makePrivate(relativePath, &error)) {
        performSuccessSelector();
        return;
    }
    SH_LOG("{}", error);
    setErrorMessage(fmt::format("Error <{}> while creating file!", error));
    performFailureSelector();
}

bool LocalStorageHelper::makePrivate(const std::string& relativePath, std::string* error) {
    std::string path = storagePath();
    for (const auto& component : std::filesystem::path(relativePath)) {
        path += "/" + component.string();
        if (!FileManager::setPermissions(path, FileModes::kPrivateFolder, error)) return false;
    }
    return true;
}

void LocalStorageHelper::createDirectoryDated(Date date) { createDirectoryForRequest(StorageLayout::stamp(date)); }

void LocalStorageHelper::createDirectory(const std::string& directory, Date date) {
    createDirectoryForRequest(StorageLayout::dataDirectory(StorageLayout::stamp(date), directory));
}

// The file is moved, not copied, by the device's mv.
void LocalStorageHelper::uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) {
    setErrorMessage(std::nullopt);
    if (!FileManager::fileExists(path)) {
        SH_LOG("<{}> doesn't exist!", path);
        performFailureSelector();
        return;
    }
    const std::string sessionFolder = storagePath() + "/" + StorageLayout::stamp(date);
    const std::string target = directory ? StorageLayout::dataDirectory(sessionFolder, *directory) : sessionFolder;
    SH_LOG("Moving {} -> {}...", path, target);
    const std::uint64_t size = FileManager::sizeOfItem(path);
    Supervisor::shared().systemExecute(fmt::format("mv {} {}", ShellQuote::path(path), ShellQuote::path(target + "/")));
    // A move onto a full disk may leave part of the file behind: only the whole file counts.
    // The device's mv keeps the mode the file was made with, by a device tool: the stored
    // file is made root's alone here.
    const std::string stored = target + "/" + lastPathComponent(path);
    std::string error;
    if (!FileManager::isRegularFile(stored) || FileManager::sizeOfItem(stored) != size) {
        setErrorMessage(fmt::format("Couldn't move file from <{}> to <{}>!", path, target));
    } else if (!FileManager::setPermissions(stored, FileModes::kPrivateFile, &error)) {
        setErrorMessage(error + "!");
    } else {
        performSuccessSelector();
        return;
    }
    performFailureSelector();
}

// Never takes the failure path: what went wrong shows only in the error.
void LocalStorageHelper::eraseAllData() {
    const std::string folder = storagePath();
    std::string error;
    const auto names = FileManager::contentsOfDirectory(folder, &error);
    if (!names) {
        SH_LOG("Couldn't list <{}>! Error: {}", folder, error);
        return;
    }
    for (const std::string& name : *names) {
        // A session folder is named by its stamp, its history file by the stamp and the suffix.
        if (!StorageLayout::dateOfHistoryFile(name)) continue;
        const std::string path = folder + "/" + name;
        if (FileManager::removeItem(path, &error)) {
            SH_LOG("Removed <{}>!", path);
        } else {
            SH_LOG("Couldn't remove <{}>! Error: {}", path, error);
        }
    }
    flushCache();
}

void LocalStorageHelper::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    setErrorMessage(std::nullopt);
    const Date date = session && session->sessionDate() ? *session->sessionDate() : Date();
    const std::string name = StorageLayout::historyFileName(date);
    const std::string file = storagePath() + "/" + name;
    std::string error;
    if (!FileManager::fileExists(file)) {
        setErrorMessage(fmt::format("<{}> doesn't exist!", file));
    } else if (!FileManager::removeItem(file, &error)) {
        setErrorMessage(fmt::format("Error <{}> while deleting file @ <{}>!", error, file));
    } else {
        removeExistingFile(name);
        const std::string folder = storagePath() + "/" + StorageLayout::stamp(date);
        // A session without bulk data has no folder: the usual case, and no failure.
        if (!FileManager::fileExists(folder)) {
            setErrorMessage(fmt::format("Error <no such folder> while deleting FOLDER @ <{}>!", folder));
        } else if (!FileManager::removeItem(folder, &error)) {
            setErrorMessage(fmt::format("Error <{}> while deleting FOLDER @ <{}>!", error, folder));
        }
    }
    performSuccessSelector();
}

std::string LocalStorageHelper::sessionFilePath(const std::string& name, Date date,
                                                const std::optional<std::string>& subDirectory) {
    std::string relativePath = StorageLayout::stamp(date);
    if (subDirectory) relativePath = StorageLayout::dataDirectory(relativePath, *subDirectory);
    return storagePath() + "/" + StorageLayout::dataDirectory(relativePath, name);
}

std::optional<std::string> LocalStorageHelper::storedFilePath(const std::string& name, Date date,
                                                              const std::optional<std::string>& subDirectory) {
    std::string path = sessionFilePath(name, date, subDirectory);
    // Never a link, a pipe or a device, which a reader would follow out of the storage or wait on.
    const auto attributes = FileManager::attributesOfItem(path);
    return attributes && attributes->type == FileType::Regular ? std::optional(std::move(path)) : std::nullopt;
}

void LocalStorageHelper::loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) {
    setErrorMessage(std::nullopt);
    const std::string source = sessionFilePath(name, date, subDirectory);
    if (!FileManager::fileExists(source)) {
        setErrorMessage(fmt::format("<{}> doesn't exist!", source));
        performFailureSelector();
        return;
    }
    const std::string target = TemporaryDirectory::path() + "/" + lastPathComponent(name);
    std::string error;
    if (!FileManager::copyItem(source, target, &error)) {
        setErrorMessage(fmt::format("Error <{}> while copying file from <{}> to <{}>!", error, source, target));
        performFailureSelector();
        return;
    }
    // The hooks stay for the next file of the same request.
    callSuccessSelectorKeepingIt(target);
}

}  // namespace stowhaven
