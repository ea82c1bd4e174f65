#pragma once

#include "storage/AbstractStorageWrapper.h"
#include "storage/gdrive/GDriveClient.h"

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The service side of the Google Drive engine. Drive has no paths: every name is resolved
// through maps from name to file record, built from listings. The product folder
// "Stowhaven" and this device's folder are found (or made) when the cache is flushed; the
// folders made while a session is written are kept by name; a session's files are listed
// once, on its first fetch. Every call blocks and answers whether it succeeded; a failure
// leaves the service's message as the error.
class GDriveWrapper final : public AbstractStorageWrapper {
public:
    GDriveWrapper();

    GDriveClient& client() { return client_; }

    // Forgets every map, then finds the structure anew: the quota, the product folder (found
    // or made), this device's folder (found in any casing, or the one an older version named
    // after the device's identifier, renamed, or made) and its listing. False, with the
    // error, when a step fails; the engine then isn't initialised.
    bool flushCache();
    bool isInitialized() const { return initialized_; }
    // Initialised, with a refresh token.
    bool isLoggedIn() const;
    // The account's "emailAddress", once the quota was read.
    std::string username() const;
    bool refreshFreeSpace();
    // The quota's free room in units of 1024 bytes; trash counts as free.
    double freeSpace() const;

    // The device folders of the product folder, by name.
    std::optional<std::vector<std::string>> loadAvailableDeviceBackups();
    // This device's history files, listed anew, oldest first (their stamps sort as text).
    std::optional<std::vector<std::string>> loadCurrentDeviceBackups();
    // The history files of that device's folder, oldest first.
    std::optional<std::vector<std::string>> getDeviceBackupData(const std::string& deviceName);

    // A folder made in the folder of that name made before in this run, or in this device's
    // folder without one; kept by its name for the uploads that follow.
    bool createDirectory(const std::string& name, const std::optional<std::string>& parentName);
    // The local file sent under its own name into the folder of that name made in this run,
    // or into this device's folder without one. A name taken there fails: the stored file
    // stays as it is.
    bool uploadFromPath(const std::string& localPath, const std::optional<std::string>& destination);
    // The session's files, its data folders' too, listed once and kept by their path in the
    // session folder ("NOTES.idx", "NOTES/NOTES-001").
    bool loadDirectoryCache(const std::string& stamp);
    // Fetches a history file of this device, or a file of the session listed by
    // loadDirectoryCache, to LOCALPATH.
    bool getFile(const std::string& relativePath, const std::optional<std::string>& stamp,
                 const std::string& localPath);
    // The session's history file, then its folder if it has one.
    bool deleteDataAtPath(const std::string& stamp);
    bool deleteDeviceBackup(const std::string& deviceName);
    bool moveDeviceBackup(const std::string& from, const std::string& to);

    // Forgets the tokens and the structure: the session is over.
    void disconnect();
    // Removes the stored refresh token.
    static void unlink();

private:
    bool fail(const std::string& message);
    std::optional<GDriveFile> initializeRootDirectory();
    // Rebuilds the device maps from the product folder's folders.
    bool listDeviceFolders(const GDriveFile& root);
    std::optional<GDriveFile> initializeHomeDirectory(const GDriveFile& root);
    std::optional<GDriveFile> existing(const std::map<std::string, GDriveFile>& map, const std::string& name) const;
    // The folder of that name made in this run, or this device's folder without a name; none,
    // with the error, when there is no such folder.
    std::optional<GDriveFile> folderToWriteIn(const std::optional<std::string>& name);

    GDriveClient client_;
    std::atomic<bool> initialized_{false};
    mutable std::mutex mutex_;
    std::optional<GDriveAbout> about_;
    std::optional<GDriveFile> rootDirectoryObject_;
    std::optional<GDriveFile> homeDirectoryObject_;
    std::map<std::string, GDriveFile> internalAvailableDeviceBackups_;
    // Folders and history files of this device's folder.
    std::map<std::string, GDriveFile> internalExistingFiles_;
    // Folders made in this run, by name.
    std::map<std::string, GDriveFile> createdFolders_;
    // Sessions listed for a fetch: stamp, then path in the session folder.
    std::map<std::string, std::map<std::string, GDriveFile>> directoryCache_;
};

}  // namespace stowhaven
