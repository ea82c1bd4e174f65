#pragma once

#include "storage/CloudStorageHelper.h"
#include "storage/StorageHelperProtocol.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class GDriveWrapper;

// Keeps sessions in the user's Google Drive, through GDriveWrapper, which resolves every name
// through maps of file records. When Google Drive is current it starts at once: the quota,
// the product folder and this device's folder, its listing. Every request blocks until Drive
// has answered. No request is retried here: the REST client retries what the service asks to
// be retried.
class GDriveHelper final : public CloudStorageHelper, public BackgroundInitialization {
public:
    // Makes the engine, which becomes the one of Google Drive, dropping any before it; it
    // starts at once when Google Drive is the current engine.
    static std::shared_ptr<GDriveHelper> createGDriveHelper();
    // Forgets the stored refresh token.
    static void unlink();

    GDriveHelper();

    bool isInitialized() override;

    // Forgets the account's tokens and gives way to local storage.
    void disconnect() override;
    bool isLoggedIn() override;
    // The account's "emailAddress".
    std::string accountName() override;
    // Trades the code of the authorisation page (with the verifier of its address) for the
    // account's tokens, then starts; nothing on success, otherwise the service's message.
    std::optional<std::string> logInWithCode(const std::string& code, const std::string& verifier);

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
    // Lists the session's files, its data folders' too, before a restore fetches them.
    void preloadFileRefUsingDate(Date date) override;

    // In units of 1024 bytes, as the quota gives them; after a failure, an alert and a room
    // no backup fills.
    double freeSpace() override;
    void refreshFreeSpace() override;
    std::int32_t fileSizeUploadLimit() override { return 10000; }

protected:
    bool fetchHistoryFile(const std::string& name) override;
    bool start() override;

private:
    GDriveWrapper& drive() const;
    bool loadListings();
};

}  // namespace stowhaven
