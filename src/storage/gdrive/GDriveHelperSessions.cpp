// The Google Drive engine's work on sessions: writing one through this run's folders by
// name, and reading, fetching and deleting by the records that listings give.

#include "platform/FileNames.h"
#include "platform/Log.h"
#include "storage/StorageLayout.h"
#include "storage/gdrive/GDriveHelper.h"
#include "storage/gdrive/GDriveWrapper.h"

#include <filesystem>

namespace stowhaven {

void GDriveHelper::uploadBackupHistory(const std::string& historyText, Date date) {
    beginRequest();
    finish(storeHistoryFile(historyText, date,
                            [this](const std::string& path) { return drive().uploadFromPath(path, std::nullopt); }));
}

void GDriveHelper::createDirectoryDated(Date date) {
    beginRequest();
    finish(drive().createDirectory(StorageLayout::stamp(date), std::nullopt));
}

void GDriveHelper::createDirectory(const std::string& directory, Date date) {
    beginRequest();
    finish(drive().createDirectory(directory, StorageLayout::stamp(date)));
}

void GDriveHelper::uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) {
    beginRequest();
    finish(drive().uploadFromPath(path, directory.value_or(StorageLayout::stamp(date))));
}

// The session's files are listed on the first fetch, and kept for the next ones.
void GDriveHelper::loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) {
    beginRequest();
    const std::string fileName = std::filesystem::path(name).filename().string();
    if (subDirectory && !isOneFileName(*subDirectory)) {
        failWith("<" + *subDirectory + "> names no folder");
        return performFailureSelector();
    }
    const std::string stamp = StorageLayout::stamp(date);
    const auto path = temporaryPathOf(fileName);
    const std::string relativePath = subDirectory ? *subDirectory + "/" + fileName : fileName;
    if (!path || !drive().loadDirectoryCache(stamp) || !drive().getFile(relativePath, stamp, *path)) {
        return performFailureSelector();
    }
    // The hooks stay for the next file of the same request.
    callSuccessSelectorKeepingIt(*path);
}

void GDriveHelper::preloadFileRefUsingDate(Date date) {
    beginRequest();
    drive().loadDirectoryCache(StorageLayout::stamp(date));
}

void GDriveHelper::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    beginRequest();
    const auto sessionDate = dateOfSessionToDelete(session);
    if (!sessionDate) return;
    const Date date = *sessionDate;
    const bool deleted = drive().deleteDataAtPath(StorageLayout::stamp(date));
    if (deleted) removeExistingFile(StorageLayout::historyFileName(date));
    finish(deleted);
}

void GDriveHelper::deleteBackupForDeviceId(const std::string& deviceName) {
    beginRequest();
    const bool deleted = drive().loadAvailableDeviceBackups() && drive().deleteDeviceBackup(deviceName);
    if (deleted) {
        if (const auto devices = drive().loadAvailableDeviceBackups()) setAvailableDeviceBackups(*devices);
    }
    finish(deleted);
}

void GDriveHelper::moveFromPath(const std::string& from, const std::string& to) {
    beginRequest();
    if (!canRenameDeviceFolderTo(to)) return;
    const bool moved = drive().loadAvailableDeviceBackups() && drive().moveDeviceBackup(from, to);
    if (moved) {
        if (const auto devices = drive().loadAvailableDeviceBackups()) setAvailableDeviceBackups(*devices);
    }
    finish(moved);
}

}  // namespace stowhaven
