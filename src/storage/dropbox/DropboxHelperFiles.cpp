// The engine's work on files and folders: making, deleting, copying and moving them, and
// sending and fetching files.

#include "storage/dropbox/DropboxHelper.h"

#include "core/BackupSession.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/FileModes.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageLayout.h"
#include "storage/TransferFollowing.h"
#include "storage/dropbox/DropboxChunkedUpload.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace stowhaven {

namespace {

std::string lastPathComponent(const std::string& path) { return std::filesystem::path(path).filename().string(); }

double secondsSince(std::chrono::system_clock::time_point start) {
    return std::chrono::duration<double>(Platform::current().clock().now() - start).count();
}

}  // namespace

bool DropboxHelper::createFolderAtPath(const std::string& path) {
    const auto linked = linkedService();
    if (!linked) return false;
    const auto answer = linked->createFolder(path);
    if (!answer.error) {
        std::string unreadable;
        if (dropbox::readMetadata(answer.body, unreadable)) return true;
        setErrorMessage(unreadable);
    } else if (answer.status == 403 && path == deviceDirectory()) {
        // The folder is there already.
        setErrorMessage(std::nullopt);
        return true;
    } else {
        if (answer.status == 403) SH_LOG("There is already a folder at the given destination.");
        setErrorMessage(answer.error);
    }
    return false;
}

void DropboxHelper::createDirectoryDated(Date date) {
    if (retryCount() == 0) setRetrySelector([=, this] { createDirectoryDated(date); });
    finish(createFolderAtPath(sessionDirectory(date)));
}

void DropboxHelper::createDirectory(const std::string& directory, Date date) {
    if (!isCleanRelativePath(directory)) return performFailureSelector();
    if (retryCount() == 0) setRetrySelector([=, this] { createDirectory(directory, date); });
    finish(createFolderAtPath(StorageLayout::dataDirectory(sessionDirectory(date), directory)));
}

// What isn't there counts as deleted.
bool DropboxHelper::deleteDataAtPath(const std::string& path) {
    const auto linked = linkedService();
    if (!linked) return false;
    const auto answer = linked->deletePath(path);
    if (answer.status == 404) {
        setErrorMessage(std::nullopt);
        return true;
    }
    if (answer.error) {
        setErrorMessage(answer.error);
        return false;
    }
    if (!dropbox::readIsDeleted(answer.body)) {
        setErrorMessage("<" + path + "> was not deleted");
        return false;
    }
    const std::string name = lastPathComponent(path);
    std::vector<std::string> devices = availableDeviceBackups();
    if (std::erase(devices, name) > 0) setAvailableDeviceBackups(std::move(devices));
    removeExistingFile(name);
    return true;
}

// The history file goes first: a session folder left behind by a failure is no session.
void DropboxHelper::deleteBackupSession(const std::shared_ptr<BackupSession>& session) {
    if (!session || !session->sessionDate()) {
        setErrorMessage("No session to delete");
        return performFailureSelector();
    }
    if (retryCount() == 0) setRetrySelector([=, this] { deleteBackupSession(session); });
    const Date date = *session->sessionDate();
    finish(deleteDataAtPath(StorageLayout::deviceDirectory(deviceDirectory(), StorageLayout::historyFileName(date))) &&
           deleteDataAtPath(sessionDirectory(date)));
}

void DropboxHelper::deleteBackupForDeviceId(const std::string& deviceName) {
    if (!isCleanRelativePath(deviceName)) return performFailureSelector();
    removeExistingFile(deviceName);
    if (retryCount() == 0) setRetrySelector([=, this] { deleteBackupForDeviceId(deviceName); });
    finish(deleteDataAtPath(StorageLayout::deviceDirectory(mainDirectory_, deviceName)));
}

void DropboxHelper::moveFromPath(const std::string& from, const std::string& to) {
    if (retryCount() == 0) setRetrySelector([=, this] { moveFromPath(from, to); });
    copyFrom(from, to, false);
}

// The device-backups screen takes another device's sessions over by a copy.
void DropboxHelper::copyFromPath(const std::string& from, const std::string& to) {
    if (retryCount() == 0) setRetrySelector([=, this] { copyFromPath(from, to); });
    copyFrom(from, to, true);
}

void DropboxHelper::copyFrom(const std::string& from, const std::string& to, bool asCopy) {
    if (!isCleanRelativePath(from) || !isCleanRelativePath(to)) return performFailureSelector();
    const auto linked = linkedService();
    if (!linked) return performFailureSelector();
    auto answer = linked->copyOrMove(asCopy ? "copy" : "move", StorageLayout::deviceDirectory(mainDirectory_, from),
                                     StorageLayout::deviceDirectory(mainDirectory_, to));
    std::string unreadable;
    if (!answer.error && !dropbox::readMetadata(answer.body, unreadable)) answer.error = unreadable;
    setErrorMessage(answer.error);
    finish(!answer.error);
}

std::optional<std::string> DropboxHelper::getFileFrom(const std::string& remotePath, const std::string& name) {
    const auto linked = linkedService();
    if (!linked) return std::nullopt;
    if (!isOneFileName(name)) {
        setErrorMessage("<" + name + "> is no file name");
        return std::nullopt;
    }
    const std::string localPath = TemporaryDirectory::path() + "/" + name;
    const auto transfer = linked->startDownload(remotePath, localPath);
    if (std::string failure; !followTransfer(*transfer, TransferDisplay::Direction::Download, 0, failure)) {
        const RestReply& reply = transfer->reply();
        setErrorMessage((reply.status != 0 ? DropboxService::errorText(reply) : failure) + " @ " + remotePath);
        return std::nullopt;
    }
    return localPath;
}

bool DropboxHelper::fetchHistoryFile(const std::string& name) {
    return getFileFrom(StorageLayout::deviceDirectory(deviceDirectory(), name), name).has_value();
}

void DropboxHelper::loadMostRecentBackupSession() {
    const auto newest = StorageLayout::mostRecent(existingFiles());
    if (!newest) return;
    if (retryCount() == 0) setRetrySelector([this] { loadMostRecentBackupSession(); });
    SH_LOG("Loading <{}> into <{}>...", *newest, TemporaryDirectory::path());
    const auto localPath = getFileFrom(StorageLayout::deviceDirectory(deviceDirectory(), *newest), *newest);
    if (!localPath) return performFailureSelector();
    // The hooks stay for the next file; the retry was this one's.
    setRetrySelector(nullptr);
    callSuccessSelectorKeepingIt(*localPath);
}

void DropboxHelper::loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) {
    if (!isCleanRelativePath(name) || (subDirectory && !isCleanRelativePath(*subDirectory)))
        return performFailureSelector();
    std::string folder = sessionDirectory(date);
    if (subDirectory) folder = StorageLayout::dataDirectory(folder, *subDirectory);
    const auto localPath = getFileFrom(StorageLayout::dataDirectory(folder, name), lastPathComponent(name));
    if (!localPath) return performFailureSelector();
    // The hooks stay for the next file of the same request.
    callSuccessSelectorKeepingIt(*localPath);
}

// A session of the same stamp is never replaced: no retry would change that.
void DropboxHelper::uploadBackupHistory(const std::string& historyText, Date date) {
    const std::string name = StorageLayout::historyFileName(date);
    const std::string target = StorageLayout::deviceDirectory(deviceDirectory(), name);
    if (const auto files = existingFiles(); std::find(files.begin(), files.end(), name) != files.end()) {
        setErrorMessage("<" + target + "> exists already");
        return performFailureSelector();
    }
    SH_LOG("Backup data size: {:.2f}Kb", static_cast<double>(historyText.size()) / 1024);
    const std::string source = TemporaryDirectory::path() + "/" + name;
    std::string error;
    if (!FileManager::writeFile(source, historyText, &error, FileModes::kPrivateFile)) {
        setErrorMessage(error);
        return performFailureSelector();
    }
    if (retryCount() == 0) setRetrySelector([=, this] { uploadBackupHistory(historyText, date); });
    finish(uploadFromPath(source, target));
}

void DropboxHelper::uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) {
    if (directory && !isCleanRelativePath(*directory)) return performFailureSelector();
    std::string folder = sessionDirectory(date);
    if (directory) folder = StorageLayout::dataDirectory(folder, *directory);
    if (retryCount() == 0) setRetrySelector([=, this] { uploadFile(path, date, directory); });
    finish(uploadFromPath(path, StorageLayout::dataDirectory(folder, lastPathComponent(path))));
}

bool DropboxHelper::uploadFromPath(const std::string& source, const std::string& target) {
    const auto linked = linkedService();
    if (!linked) return false;
    std::string error;
    const auto attributes = FileManager::attributesOfItem(source, &error);
    if (!attributes || !FileManager::isRegularFile(source)) {
        SH_LOG("Error: {}", error);
        setErrorMessage("<" + source + "> is no file to send" + (error.empty() ? "" : ": " + error));
        return false;
    }
    const auto start = Platform::current().clock().now();
    DropboxChunkedUpload upload(*linked, source, static_cast<std::int64_t>(attributes->size), target);
    const auto stored = upload.run(error);
    if (!stored) {
        SH_LOG("Error: {} | Failed to upload after {}s", error, secondsSince(start));
        setErrorMessage(error);
        return false;
    }
    Supervisor::shared().deleteFileAtPath(source);
    SH_LOG("<{}> uploaded in {}s", target, secondsSince(start));
    if (target.ends_with(StorageLayout::kHistoryFileSuffix)) addExistingFile(lastPathComponent(target));
    freeSpace_ = freeSpace_ - static_cast<double>(stored->bytes) * kMegabytesPerByte;
    SH_LOG("Freespace: {}Mb", freeSpace_.load());
    setErrorMessage(std::nullopt);
    return true;
}

}  // namespace stowhaven
