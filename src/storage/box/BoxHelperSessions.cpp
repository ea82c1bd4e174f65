// The Box engine's work on sessions: writing one through this run's map of folder ids, and
// reading, fetching and deleting by the ids that listings give.

#include "platform/FileNames.h"
#include "platform/Log.h"
#include "storage/StorageLayout.h"
#include "storage/box/BoxHelper.h"
#include "storage/box/BoxWrapper.h"

#include <filesystem>

namespace stowhaven {

std::optional<std::string> BoxHelper::internalFolder(const std::string& name) {
    std::lock_guard lock(internalFoldersMutex_);
    const auto found = internalFolders_.find(name);
    if (found != internalFolders_.end()) return found->second;
    failWith("Can't find directory <" + name + ">");
    return std::nullopt;
}

// The start of a session: the map of its folders begins anew.
void BoxHelper::uploadBackupHistory(const std::string& historyText, Date date) {
    beginRequest();
    {
        std::lock_guard lock(internalFoldersMutex_);
        internalFolders_.clear();
    }
    finish(storeHistoryFile(historyText, date,
                            [this](const std::string& path) { return box().uploadFile(path, std::nullopt); }));
}

void BoxHelper::createDirectoryDated(Date date) {
    beginRequest();
    const std::string stamp = StorageLayout::stamp(date);
    const auto id = box().createFolder(stamp, std::nullopt);
    if (id) {
        std::lock_guard lock(internalFoldersMutex_);
        internalFolders_[stamp] = *id;
    }
    finish(id.has_value());
}

void BoxHelper::createDirectory(const std::string& directory, Date date) {
    beginRequest();
    const auto session = internalFolder(StorageLayout::stamp(date));
    const auto id = session ? box().createFolder(directory, session) : std::nullopt;
    if (id) {
        std::lock_guard lock(internalFoldersMutex_);
        internalFolders_[directory] = *id;
    }
    finish(id.has_value());
}

void BoxHelper::uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) {
    beginRequest();
    const auto folder = internalFolder(directory.value_or(StorageLayout::stamp(date)));
    finish(folder && box().uploadFile(path, folder));
}

// Files are looked up by their name alone, in this device's folder and then among the
// session's prefetched items.
void BoxHelper::loadFile(const std::string& name, Date date, const std::optional<std::string>&) {
    const std::string fileName = std::filesystem::path(name).filename().string();
    loadSessionFile(
        fileName, date, [&] { return box().idWithName(fileName, false); },
        [&](const std::string& id) { return fetch(id, fileName); });
}

void BoxHelper::preloadFileRefUsingDate(Date date) {
    const std::string stamp = StorageLayout::stamp(date);
    notePrefetchedSession(stamp);
    box().clearPrefetchData();
    const auto id = box().idWithName(stamp, true);
    if (!id) {
        SH_LOG("Couldn't find backup data FOLDER with name <{}>", stamp);
        return;
    }
    box().prefetchFileAndFolderIds(*id);
}

// The history file goes first: a session folder left behind by a failure is no session.
void BoxHelper::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    beginRequest();
    const auto sessionDate = dateOfSessionToDelete(session);
    if (!sessionDate) return;
    const Date date = *sessionDate;
    const std::string name = StorageLayout::historyFileName(date);
    const auto fileId = box().idWithName(name, false);
    if (!fileId) failWith("Couldn't find backup data FILE with name <" + name + ">");
    if (!fileId || !box().deleteWithId(*fileId, false)) return performFailureSelector();
    removeExistingFile(name);
    const std::string stamp = StorageLayout::stamp(date);
    if (isPrefetchedSession(stamp)) forgetPrefetchedSession();
    box().clearPrefetchData();
    const auto folderId = box().idWithName(stamp, true);
    if (!folderId) {
        SH_LOG("Couldn't find backup data FOLDER with name <{}>", stamp);
        box().setErrorMessage(std::nullopt);
        return performSuccessSelector();
    }
    finish(box().deleteWithId(*folderId, true));
}

void BoxHelper::deleteBackupForDeviceId(const std::string& deviceName) {
    beginRequest();
    const auto id = isOneFileName(deviceName) ? box().folderIdForDevice(deviceName) : std::nullopt;
    if (!id) {
        if (!hasError()) failWith("Couldn't device FOLDER data for <" + deviceName + ">");
        return performFailureSelector();
    }
    finish(box().deleteWithId(*id, true));
}

void BoxHelper::moveFromPath(const std::string& from, const std::string& to) {
    beginRequest();
    if (!canRenameDeviceFolderTo(to)) return;
    const auto id = isOneFileName(from) ? box().folderIdForDevice(from) : std::nullopt;
    if (!id) {
        if (!hasError()) failWith("Couldn't find data for <" + from + ">");
        return performFailureSelector();
    }
    if (!box().rename(*id, to)) return performFailureSelector();
    listDeviceFolderRenamed(from, to);
    performSuccessSelector();
}

}  // namespace stowhaven
