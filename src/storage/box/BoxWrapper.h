#pragma once

#include "storage/AbstractStorageWrapper.h"
#include "storage/box/BoxClient.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The service side of the Box engine. Box addresses everything by id, so the wrapper holds
// the three base folders (the account's root "0", the base directory "Stowhaven" and this
// device's directory) and lists folders to turn names into ids. Every call blocks and
// answers whether it succeeded; a failure leaves the service's message as the error.
class BoxWrapper final : public AbstractStorageWrapper {
public:
    BoxWrapper();

    BoxClient& client() { return client_; }

    // The account's record, then the base folders: the base directory found in any casing
    // or made, this device's directory found by its name, or by the identifier older
    // versions named it after (then renamed), or made.
    bool initializeBaseFolders();
    void clearMainAndRootData();
    bool isInitializationCompleted() const { return initializationCompleted_; }
    // Initialised, with a refresh token.
    bool isLoggedIn() const;
    // The account's login, once its record was read.
    std::string userName() const;
    // The account's free room in bytes: spaceAmount less spaceUsed.
    double freeSpace() const { return freeSpace_; }
    bool getAccountInfos();

    // The names of every item of the base directory, files too.
    std::optional<std::vector<std::string>> availableDeviceBackups();
    // The names of the files of this device's directory, as listed.
    std::optional<std::vector<std::string>> existingFiles();
    // The names of the files of that device's directory.
    std::optional<std::vector<std::string>> getDeviceBackupData(const std::string& deviceFolderId);
    // The id of the device directory of exactly that name.
    std::optional<std::string> folderIdForDevice(const std::string& deviceName);
    // The id of the folder, or file, of that name (any casing) in this device's directory,
    // the last listed winning; else in the prefetched items, the first winning.
    std::optional<std::string> idWithName(const std::string& name, bool asFolder);
    // The session folder, its items and its folders' items, one level deep, kept for the
    // lookups of a restore.
    bool prefetchFileAndFolderIds(const std::string& folderId);
    void clearPrefetchData();

    // A folder made in the given one, or in this device's directory without one; its id.
    std::optional<std::string> createFolder(const std::string& name, const std::optional<std::string>& inFolderId);
    // The local file sent under its own name into the folder, or this device's directory.
    bool uploadFile(const std::string& localPath, const std::optional<std::string>& inFolderId);
    bool downloadFileData(const std::string& id, const std::string& localPath);
    bool deleteWithId(const std::string& id, bool asFolder);
    bool rename(const std::string& id, const std::string& name);

    // Forgets the account's tokens: the session is over.
    void removeTokens();
    // Removes the stored refresh token.
    static void unlink();

private:
    // The base directory, found or made.
    std::optional<BoxItem> processRootFolderData();
    // This device's directory in the base directory, found, renamed or made.
    std::optional<BoxItem> processMainDirectoryData(const std::string& baseId);
    std::optional<std::string> mainDirectoryId() const;
    std::optional<std::string> deviceDirectoryId() const;
    std::optional<std::vector<BoxItem>> deviceItems();

    BoxClient client_;
    std::atomic<bool> initializationCompleted_{false};
    std::atomic<double> freeSpace_{0};
    mutable std::mutex mutex_;
    std::optional<BoxUser> currentUser_;
    std::optional<BoxItem> rootFolderData_;
    std::optional<BoxItem> mainDirectoryData_;
    std::optional<BoxItem> rootDirectoryData_;
    std::vector<BoxItem> prefetchData_;
};

}  // namespace stowhaven
