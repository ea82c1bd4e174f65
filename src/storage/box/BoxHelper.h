#pragma once

#include "storage/CloudStorageHelper.h"
#include "storage/StorageHelperProtocol.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

class BoxWrapper;

// Keeps sessions in the user's Box account, through BoxWrapper. Box addresses everything by
// id: the engine keeps a map from name to id for the session it is writing (its history
// upload starts one), and before a restore fetches the ids of the session's files in one
// walk. When Box is current it starts at once: the account, the base folders and the
// listings. No request is retried here: the REST client retries what the service asks to be
// retried.
class BoxHelper final : public CloudStorageHelper, public BackgroundInitialization {
public:
    // Makes the engine, which becomes the one of Box, dropping any before it; it starts at
    // once when Box is the current engine.
    static std::shared_ptr<BoxHelper> createBoxHelper();
    // Forgets the stored refresh token.
    static void unlink();

    BoxHelper();

    bool isInitialized() override;

    // Forgets the account's tokens and gives way to local storage.
    void disconnect() override;
    bool isLoggedIn() override;
    // The account's login.
    std::string accountName() override;
    // Trades the code of the authorisation page for the account's tokens, then starts;
    // nothing on success, otherwise the service's message.
    std::optional<std::string> logInWithCode(const std::string& code);

    void resetAll() override;
    void loadAvailableDeviceBackups() override;
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
    std::int32_t fileSizeUploadLimit() override { return 1000; }

protected:
    bool fetchHistoryFile(const std::string& name) override;
    bool start() override;

private:
    BoxWrapper& box() const;
    // The device folders and this device's history files; a flush also forgets the files
    // dropped as damaged.
    bool loadListings(bool forgettingDamagedFiles);
    // A file fetched into the temporary folder under NAME, which must be one clean name.
    std::optional<std::string> fetch(const std::string& id, const std::string& name);
    // The id of a session's folder, or of a data folder in it, from this run's map.
    std::optional<std::string> internalFolder(const std::string& name);

    std::mutex internalFoldersMutex_;
    std::map<std::string, std::string> internalFolders_;
};

}  // namespace stowhaven
