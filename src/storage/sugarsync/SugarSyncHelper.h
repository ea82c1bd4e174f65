#pragma once

#include "storage/CloudStorageHelper.h"
#include "storage/StorageHelperProtocol.h"
#include "storage/sugarsync/SugarSyncReplies.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

class SugarSyncWrapper;

// Keeps sessions in the user's SugarSync account, in the "Stowhaven" folder of its Magic
// Briefcase, through SugarSyncWrapper. Everything there is known by a reference the service
// hands out, never by a path: the engine keeps the entries of this device's folder, with the
// folders it makes, and before a restore the items of the session's folder, one level deep.
// Names are compared decoded. When SugarSync is current it logs in at once with the stored
// credentials; without them, or when SugarSync can't be reached, it leaves its error and
// gives way to local storage for this run.
class SugarSyncHelper final : public CloudStorageHelper, public DefaultBackupDetailsLoading {
public:
    // Makes the engine, which becomes the one of SugarSync, dropping any before it; it logs
    // in at once when a login is stored and the network is there.
    static std::shared_ptr<SugarSyncHelper> createSugarSyncHelper();
    // Forgets the stored login, password and expiry.
    static void unlink();

    SugarSyncHelper();

    // Ends the session and forgets the stored credentials; the storage type stays.
    void disconnect() override;
    bool isLoggedIn() override;
    // The login.
    std::string accountName() override;
    // Logs in with these credentials and reads the listings; with STORING the credentials
    // are kept once it all worked. Nothing on success, otherwise the service's words.
    std::optional<std::string> logIn(const std::string& user, const std::string& password, bool storing);

    // Forgets the listings; unlike a start, it sends nothing.
    void flushCache() override;
    // Every call walks the history files again; without any it posts nothing.
    void retrieveRestOfBackupHistory() override;
    void resetAll() override;
    void loadAvailableDeviceBackups() override;
    void loadDefaultBackupDetails() override;
    void loadBackupDetailsForDevice(const std::string& deviceName) override;
    void loadMostRecentBackupSession() override;
    void loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) override;
    void createDirectoryDated(Date date) override;
    void createDirectory(const std::string& directory, Date date) override;
    void uploadBackupHistory(const std::string& historyText, Date date) override;
    void uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) override;
    void deleteBackupSession(const std::shared_ptr<BackupSession>& session) override;
    void deleteBackupForDeviceId(const std::string& deviceName) override;
    void moveFromPath(const std::string& from, const std::string& to) override;
    void preloadFileRefUsingDate(Date date) override;

    // As the service gives the quota, in bytes.
    double freeSpace() override;
    void refreshFreeSpace() override;
    std::int32_t fileSizeUploadLimit() override { return 500; }

protected:
    bool fetchHistoryFile(const std::string& name) override;
    // Logs in with the stored credentials and reads the listings.
    bool start() override;

private:
    SugarSyncWrapper& sugarSync() const;
    // The product's folder and its device folders, then this device's folder.
    bool loadListings();
    bool listDeviceFolders();
    bool listDeviceFolder();

    // The newest folder of this device's entries with that name.
    std::optional<std::string> findFolderRefForName(const std::string& name);
    // A file present on the server with that name, among the preloaded session's items,
    // then this device's entries: its content's address (FORDATA), or its reference. A file
    // stored in this run is known by its reference only, until the next listing.
    std::optional<std::string> findFileRefForName(const std::string& name, bool forData);
    std::optional<std::string> deviceRef(const std::string& deviceName);
    // A file entry made in the folder and the local file stored as its content; the entry's
    // reference.
    std::optional<std::string> store(const std::string& localPath, const std::string& name,
                                     const std::string& folderRef);
    // The content fetched into the temporary folder under NAME, which must be one clean name.
    std::optional<std::string> fetch(const std::string& fileData, const std::string& name);
    void addEntry(SugarSyncEntry entry);
    void forgetPreloadedEntries();

    mutable std::mutex mutex_;
    std::optional<std::string> rootFolderRef_;
    std::optional<std::string> mainFolderRef_;
    std::optional<std::vector<SugarSyncEntry>> internalAvailableDeviceBackups_;
    std::optional<std::vector<SugarSyncEntry>> internalExistingFiles_;
    // The items of the session folder preloaded last; its stamp is the prefetched session's.
    std::vector<SugarSyncEntry> preloadedEntries_;
};

}  // namespace stowhaven
