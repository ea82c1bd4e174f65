// The SugarSync engine's work on sessions: folders and file entries made in this device's
// folder by reference, and files found by name among the listed entries.

#include "platform/Log.h"
#include "storage/StorageLayout.h"
#include "storage/sugarsync/SugarSyncHelper.h"
#include "storage/sugarsync/SugarSyncWrapper.h"

#include <algorithm>
#include <filesystem>

namespace stowhaven {

namespace {

// What every uploaded file is stored as.
constexpr const char* kMediaType = "application/x-compressed";

}  // namespace

// A file entry that got no content stays out of every listing: a failed upload leaves
// nothing that reads as a file.
std::optional<std::string> SugarSyncHelper::store(const std::string& localPath, const std::string& name,
                                                  const std::string& folderRef) {
    const auto fileRef = sugarSync().createFile(name, kMediaType, folderRef);
    if (!fileRef || !sugarSync().putDataPath(localPath, *fileRef)) return std::nullopt;
    return fileRef;
}

void SugarSyncHelper::uploadBackupHistory(const std::string& historyText, Date date) {
    beginRequest();
    const std::string name = StorageLayout::historyFileName(date);
    std::optional<std::string> main;
    {
        std::lock_guard lock(mutex_);
        main = mainFolderRef_;
    }
    const auto files = existingFiles();
    if (!main) {
        failWith("SugarSync isn't ready: the device's folder is unknown");
        return performFailureSelector();
    }
    if (std::find(files.begin(), files.end(), name) != files.end()) {
        failWith("A session of that date is stored already: <" + name + ">");
        return performFailureSelector();
    }
    finish(storeHistoryFile(historyText, date, [&](const std::string& path) {
        const auto fileRef = store(path, name, *main);
        if (fileRef) addEntry(SugarSyncEntry{false, name, name, *fileRef, ""});
        return fileRef.has_value();
    }));
}

void SugarSyncHelper::uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) {
    beginRequest();
    const std::string folderName = directory.value_or(StorageLayout::stamp(date));
    const auto folder = findFolderRefForName(folderName);
    if (!folder) {
        failWith("Can't find directory <" + folderName + ">");
        return performFailureSelector();
    }
    finish(store(path, std::filesystem::path(path).filename().string(), *folder).has_value());
}

void SugarSyncHelper::createDirectoryDated(Date date) {
    beginRequest();
    const std::string stamp = StorageLayout::stamp(date);
    std::optional<std::string> main;
    {
        std::lock_guard lock(mutex_);
        main = mainFolderRef_;
    }
    const auto ref = main ? sugarSync().createFolder(stamp, *main) : std::nullopt;
    if (!main) failWith("SugarSync isn't ready: the device's folder is unknown");
    if (ref) addEntry(SugarSyncEntry{true, stamp, stamp, *ref, ""});
    finish(ref.has_value());
}

void SugarSyncHelper::createDirectory(const std::string& directory, Date date) {
    beginRequest();
    const std::string stamp = StorageLayout::stamp(date);
    const auto session = findFolderRefForName(stamp);
    if (!session) {
        failWith("Can't find directory <" + stamp + ">");
        return performFailureSelector();
    }
    const auto ref = sugarSync().createFolder(directory, *session);
    if (ref) addEntry(SugarSyncEntry{true, directory, directory, *ref, ""});
    finish(ref.has_value());
}

// The session's folder, found in this device's folder (listed again when it isn't known),
// and its items with those of its folders.
void SugarSyncHelper::preloadFileRefUsingDate(Date date) {
    const std::string stamp = StorageLayout::stamp(date);
    forgetPreloadedEntries();
    notePrefetchedSession(stamp);
    auto session = findFolderRefForName(stamp);
    if (!session && listDeviceFolder()) session = findFolderRefForName(stamp);
    if (!session) {
        SH_LOG("Couldn't find backup data FOLDER with name <{}>", stamp);
        return;
    }
    const auto items = sugarSync().getFolderContent(session);
    if (!items) return;
    std::vector<SugarSyncEntry> preloaded = *items;
    for (const SugarSyncEntry& item : *items) {
        if (!item.isFolder) continue;
        if (const auto inner = sugarSync().getFolderContent(item.ref)) {
            preloaded.insert(preloaded.end(), inner->begin(), inner->end());
        }
    }
    std::lock_guard lock(mutex_);
    preloadedEntries_ = std::move(preloaded);
}

// Only the name counts, among the items of the session of that date.
void SugarSyncHelper::loadFile(const std::string& name, Date date, const std::optional<std::string>&) {
    const std::string fileName = std::filesystem::path(name).filename().string();
    loadSessionFile(
        fileName, date, [&] { return findFileRefForName(fileName, true); },
        [&](const std::string& fileData) { return fetch(fileData, fileName); });
}

// The history file goes first: a session folder left behind by a failure is no session.
void SugarSyncHelper::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    beginRequest();
    const auto date = dateOfSessionToDelete(session);
    if (!date) return;
    const std::string stamp = StorageLayout::stamp(*date);
    const std::string name = StorageLayout::historyFileName(*date);
    const auto fileRef = findFileRefForName(name, false);
    if (!fileRef) {
        failWith("Couldn't find backup data FILE with name <" + name + ">");
        return performFailureSelector();
    }
    if (!sugarSync().deleteRef(*fileRef, false)) return performFailureSelector();
    removeExistingFile(name);
    if (const auto folderRef = findFolderRefForName(stamp)) sugarSync().deleteRef(*folderRef, true);
    {
        std::lock_guard lock(mutex_);
        if (internalExistingFiles_) {
            std::erase_if(*internalExistingFiles_,
                          [&](const SugarSyncEntry& entry) { return entry.name == stamp || entry.name == name; });
        }
    }
    if (isPrefetchedSession(stamp)) forgetPreloadedEntries();
    beginRequest();
    performSuccessSelector();
}

void SugarSyncHelper::deleteBackupForDeviceId(const std::string& deviceName) {
    beginRequest();
    const auto ref = deviceRef(deviceName);
    if (!ref) {
        failWith("Couldn't find data for <" + deviceName + ">");
        return performFailureSelector();
    }
    finish(sugarSync().deleteRef(*ref, true));
}

void SugarSyncHelper::moveFromPath(const std::string& from, const std::string& to) {
    beginRequest();
    if (!canRenameDeviceFolderTo(to)) return;
    const auto ref = deviceRef(from);
    if (!ref) {
        failWith("Couldn't find data for <" + from + ">");
        return performFailureSelector();
    }
    if (!sugarSync().renameRef(*ref, to)) return performFailureSelector();
    {
        std::lock_guard lock(mutex_);
        if (internalAvailableDeviceBackups_) {
            for (SugarSyncEntry& entry : *internalAvailableDeviceBackups_) {
                if (entry.ref == *ref) entry.name = to;
            }
        }
    }
    listDeviceFolderRenamed(from, to);
    performSuccessSelector();
}

}  // namespace stowhaven
