#pragma once

#include "storage/AbstractStorageHelper.h"
#include "storage/RemoteFolders.h"
#include "storage/StorageType.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

// The storage contract on the folders of a server, by path: sessions under
// <root>/<device name>, as every engine lays them out. When its engine is current it
// connects at once, making the root and the device's folder where they are missing, and
// lists the device folders and the history files. An engine that can't (no credentials, a
// refused login, a server that can't be reached) leaves its error and gives way to local
// storage for this run, its settings kept. Only the history file's upload retries; every
// other operation fails at its first error. An engine says what differs: its credentials,
// its device folder of older versions, renames and deletes of device folders.
class RemoteFolderStorageHelper : public AbstractStorageHelper,
                                  public ConnectionOrientedStorageHelperProtocol,
                                  public BackgroundInitialization,
                                  public DefaultBackupDetailsLoading {
public:
    bool isInitialized() override { return initialized_; }

    // Starts as when made, and the engine becomes current; without success it gives way.
    void connect() override;
    void disconnect() override;
    bool isLoggedIn() override;

    void flushCache() override;
    void resetAll() override;
    void loadAvailableDeviceBackups() override;
    void loadBackupDetailsForDevice(const std::string& deviceName) override;
    void loadDefaultBackupDetails() override;
    void loadMostRecentBackupSession() override;
    void loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) override;
    void createDirectoryDated(Date date) override;
    void createDirectory(const std::string& directory, Date date) override;
    void uploadBackupHistory(const std::string& historyText, Date date) override;
    void uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) override;
    void deleteBackupSession(const std::shared_ptr<BackupSession>& session) override;
    void deleteBackupForDeviceId(const std::string& deviceName) override;
    void moveFromPath(const std::string& from, const std::string& to) override;
    double freeSpace() override { return 2147483647.0; }
    void refreshFreeSpace() override {}
    void showProgressOnView() override {}
    void hideProgress() override {}

protected:
    RemoteFolderStorageHelper(StorageType type, std::unique_ptr<RemoteFolders> server);

    RemoteFolders& server() const;
    bool fetchHistoryFile(const std::string& name) override;

    // The program's folder on the server, and the text of the first missing credential.
    virtual std::string rootDirectory() const = 0;
    virtual std::optional<std::string> missingCredentials() const = 0;
    // What to do with the device folders just listed, a folder of an older version's among them.
    virtual void takeDeviceFolders() { migrateDeviceDirectory(); }
    // Renames and deletes of whole device folders; engines that leave them to the user refuse.
    virtual bool movesDeviceFolders() const { return true; }
    // "FTP_CONNECTED" and the like.
    virtual std::string notificationPrefix() const = 0;

private:
    std::string homeDirectory() const;
    std::string sessionDirectory(Date date) const;
    bool isDeviceFolder(const std::string& name) const;
    // The credentials checked, the root and home folders proved, the listings read.
    bool start();
    bool loadDeviceFolders();
    bool loadHistoryFiles();
    void fallBackToLocalStorage();
    // Ends a request by the outcome of its one step.
    void finish(bool succeeded, const HookObject& object = {});

    StorageType type_;
    std::atomic<bool> initialized_{false};
};

}  // namespace stowhaven
