#pragma once

#include "storage/CloudStorageHelper.h"
#include "storage/StorageHelperProtocol.h"
#include "storage/onedrive/SkyDriveEntryCache.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class SkyDriveWrapper;

// Keeps sessions in the user's OneDrive, through SkyDriveWrapper. OneDrive addresses
// everything by id: the engine keeps the entries that listings gave, those of the product
// folder (the device folders) and those of this device's folder and of the session folders
// it has read, and resolves names there. Files lie under their names with ".pdf" added; the
// engine shows and fetches them under the names they were sent with. When OneDrive is current
// it starts at once: the account, the quota, the folders and the listings.
class SkyDriveHelper final : public CloudStorageHelper,
                             public DefaultBackupDetailsLoading,
                             public BackgroundInitialization {
public:
    // Makes the engine, which becomes the one of OneDrive, dropping any before it; it starts
    // at once when OneDrive is the current engine.
    static std::shared_ptr<SkyDriveHelper> createSkyDriveHelper();
    // Forgets the stored tokens.
    static void unlink();

    SkyDriveHelper();

    bool isInitialized() override;

    // Forgets the account's tokens and gives way to local storage.
    void disconnect() override;
    bool isLoggedIn() override;
    // The user's name.
    std::string accountName() override;
    // Trades the code of the authorisation page for the account's tokens, then starts;
    // nothing on success, otherwise the service's message.
    std::optional<std::string> logInWithCode(const std::string& code);

    // Forgets the entries read, then starts anew.
    void flushCache() override;
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

    // In bytes, as the account reports it.
    double freeSpace() override;
    void refreshFreeSpace() override;
    std::int32_t fileSizeUploadLimit() override { return 20000; }

protected:
    bool fetchHistoryFile(const std::string& name) override;
    bool start() override;

private:
    SkyDriveWrapper& skyDrive() const;
    // The device folders and this device's history files; a flush also forgets the files
    // dropped as damaged.
    bool loadListings(bool forgettingDamagedFiles);
    bool loadDeviceFolders();
    // The id of this device's folder, or of the product folder; none, with the error, before
    // the engine has found them.
    std::optional<std::string> deviceFolderId();
    std::optional<std::string> mainFolderId();
    // The device folder of that name, from a fresh listing of the product folder; none, with
    // the error, without one.
    std::optional<SkyDriveEntry> deviceFolderNamed(const std::string& deviceName);
    // The session's folder, or a data folder in it.
    std::optional<SkyDriveEntry> sessionFolder(Date date, const std::optional<std::string>& directory);
    // A file fetched into the temporary folder under NAME, which must be one clean name.
    std::optional<std::string> fetch(const std::string& id, const std::string& name);

    // The product folder's entries, and this device's folder's with the sessions' read since.
    SkyDriveEntryCache internalAvailableDeviceBackups_;
    SkyDriveEntryCache internalExistingFiles_;
};

}  // namespace stowhaven
