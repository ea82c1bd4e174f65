// The OneDrive engine's work on sessions: folders and files made, found, fetched and deleted
// by the entries that listings and replies gave.

#include "core/BackupSession.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "storage/StorageLayout.h"
#include "storage/onedrive/SkyDriveHelper.h"
#include "storage/onedrive/SkyDriveWrapper.h"

#include <filesystem>

namespace stowhaven {

std::optional<SkyDriveEntry> SkyDriveHelper::sessionFolder(Date date, const std::optional<std::string>& directory) {
    const std::string stamp = StorageLayout::stamp(date);
    const auto deviceId = deviceFolderId();
    auto folder = deviceId ? internalExistingFiles_.folder(stamp, *deviceId) : std::nullopt;
    if (folder && directory) folder = internalExistingFiles_.folder(*directory, folder->id);
    if (!folder && !hasError()) failWith("Can't find directory <" + directory.value_or(stamp) + ">");
    return folder;
}

void SkyDriveHelper::uploadBackupHistory(const std::string& historyText, Date date) {
    beginRequest();
    const auto deviceId = deviceFolderId();
    finish(deviceId && storeHistoryFile(historyText, date, [&](const std::string& path) {
               const auto stored = skyDrive().uploadFile(path, *deviceId);
               if (stored) internalExistingFiles_.add(*stored);
               return stored.has_value();
           }));
}

void SkyDriveHelper::createDirectoryDated(Date date) {
    beginRequest();
    const auto deviceId = deviceFolderId();
    const auto made = deviceId ? skyDrive().createDirectory(StorageLayout::stamp(date), *deviceId) : std::nullopt;
    if (made) internalExistingFiles_.add(*made);
    finish(made.has_value());
}

void SkyDriveHelper::createDirectory(const std::string& directory, Date date) {
    beginRequest();
    const auto session = sessionFolder(date, std::nullopt);
    const auto made = session ? skyDrive().createDirectory(directory, session->id) : std::nullopt;
    if (made) internalExistingFiles_.add(*made);
    finish(made.has_value());
}

void SkyDriveHelper::uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) {
    beginRequest();
    const auto folder = sessionFolder(date, directory);
    const auto stored = folder ? skyDrive().uploadFile(path, folder->id) : std::nullopt;
    if (stored) internalExistingFiles_.add(*stored);
    finish(stored.has_value());
}

// A file is looked up in its own folder of the session.
void SkyDriveHelper::loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) {
    const std::string fileName = std::filesystem::path(name).filename().string();
    loadSessionFile(
        fileName, date,
        [&]() -> std::optional<std::string> {
            const auto folder = sessionFolder(date, subDirectory);
            const auto entry = folder ? internalExistingFiles_.file(fileName, folder->id) : std::nullopt;
            if (!entry) return std::nullopt;
            return entry->id;
        },
        [&](const std::string& id) { return fetch(id, fileName); });
}

// The session folder's entries, and those of each folder in it, one level deep.
void SkyDriveHelper::preloadFileRefUsingDate(Date date) {
    const std::string stamp = StorageLayout::stamp(date);
    notePrefetchedSession(stamp);
    const auto deviceId = deviceFolderId();
    const auto session = deviceId ? internalExistingFiles_.folder(stamp, *deviceId) : std::nullopt;
    if (!session) {
        SH_LOG("Couldn't find backup data FOLDER with name <{}>", stamp);
        return;
    }
    const auto entries = skyDrive().loadFileListFrom(session->id);
    if (!entries) return;
    internalExistingFiles_.replaceChildren(session->id, *entries);
    for (const SkyDriveEntry& entry : *entries) {
        if (!entry.isFolder) continue;
        if (const auto inner = skyDrive().loadFileListFrom(entry.id))
            internalExistingFiles_.replaceChildren(entry.id, *inner);
    }
}

// The history file goes first: a session folder left behind by a failure is no session.
void SkyDriveHelper::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    beginRequest();
    const auto sessionDate = dateOfSessionToDelete(session);
    if (!sessionDate) return;
    const Date date = *sessionDate;
    const std::string name = StorageLayout::historyFileName(date);
    const auto deviceId = deviceFolderId();
    const auto file = deviceId ? internalExistingFiles_.file(name, *deviceId) : std::nullopt;
    if (deviceId && !file) failWith("Couldn't find backup data FILE with name <" + name + ">");
    if (!file || !skyDrive().deleteFileData(file->id)) return performFailureSelector();
    internalExistingFiles_.remove(file->id);
    removeExistingFile(name);
    forgetPrefetchedSession();
    const auto folder = internalExistingFiles_.folder(StorageLayout::stamp(date), *deviceId);
    if (!folder) {
        SH_LOG("Couldn't find backup data FOLDER with name <{}>", StorageLayout::stamp(date));
        return performSuccessSelector();
    }
    const bool deleted = skyDrive().deleteFileData(folder->id);
    if (deleted) internalExistingFiles_.remove(folder->id);
    finish(deleted);
}

void SkyDriveHelper::deleteBackupForDeviceId(const std::string& deviceName) {
    beginRequest();
    const auto folder = deviceFolderNamed(deviceName);
    if (!folder) return performFailureSelector();
    if (!skyDrive().deleteFileData(folder->id)) return performFailureSelector();
    internalAvailableDeviceBackups_.remove(folder->id);
    std::vector<std::string> devices = availableDeviceBackups();
    std::erase(devices, deviceName);
    setAvailableDeviceBackups(std::move(devices));
    performSuccessSelector();
}

void SkyDriveHelper::moveFromPath(const std::string& from, const std::string& to) {
    beginRequest();
    if (!canRenameDeviceFolderTo(to)) return;
    const auto folder = deviceFolderNamed(from);
    if (!folder) return performFailureSelector();
    if (internalAvailableDeviceBackups_.named(to, *folder->parentId)) {
        failWith("<" + to + "> ALREADY EXISTS!?!");
        return performFailureSelector();
    }
    if (!skyDrive().rename(folder->id, to)) return performFailureSelector();
    SkyDriveEntry renamed = *folder;
    renamed.name = to;
    internalAvailableDeviceBackups_.add(renamed);
    listDeviceFolderRenamed(from, to);
    performSuccessSelector();
}

}  // namespace stowhaven
