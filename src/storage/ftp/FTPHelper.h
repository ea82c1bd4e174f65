#pragma once

#include "storage/AbstractStorageHelper.h"
#include "storage/ftp/FTPCredentials.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class FTPWrapper;

// Keeps sessions on an FTP server of the user's, under <root>/<device name>, through
// FTPWrapper. Made with the current connection of the settings; when FTP is the current
// engine it connects at once, making the root and the device's folder where they are
// missing, renaming a device folder of an older version, and listing the history files.
// An engine that can't (no credentials, a refused login, a server that can't be reached)
// leaves its error and gives way to local storage for this run, its settings kept.
// Only the history file's upload retries; every other operation fails at its first error.
class FTPHelper final : public AbstractStorageHelper,
                        public ConnectionOrientedStorageHelperProtocol,
                        public BackgroundInitialization,
                        public DefaultBackupDetailsLoading {
public:
    // Makes the engine, which becomes the one of FTP, dropping any before it.
    static std::shared_ptr<FTPHelper> createFTPHelper();

    explicit FTPHelper(FTPCredentials credentials);

    bool isInitialized() override { return initialized_; }

    void connect() override;
    void disconnect() override;
    bool isLoggedIn() override;
    std::string accountName() override;

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
    std::int32_t fileSizeUploadLimit() override { return 2147483647; }
    void showProgressOnView() override {}
    void hideProgress() override {}

protected:
    bool fetchHistoryFile(const std::string& name) override;

private:
    FTPWrapper& ftp() const;
    std::string rootDirectory() const;
    std::string homeDirectory() const;
    std::string sessionDirectory(Date date) const;
    // The start: the credentials checked, the root and home folders proved, the listings read.
    bool start();
    // The device folders of the root, migrated; the device's own made when missing.
    bool loadDeviceFolders();
    // The history files of the device's folder into existingFiles().
    bool loadHistoryFiles();
    bool isDeviceFolder(const std::string& name) const;
    // Gives way to local storage for this run, the settings kept.
    void fallBackToLocalStorage();
    // Ends a request by the outcome of its one step.
    void finish(bool succeeded, const HookObject& object = {});

    std::atomic<bool> initialized_{false};
};

}  // namespace stowhaven
