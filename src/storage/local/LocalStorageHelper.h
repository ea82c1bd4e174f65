#pragma once

#include "storage/AbstractStorageHelper.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// Keeps sessions in a folder on the device itself: the engine every network engine falls
// back to. There is no device directory: the folder holds <stamp>.stowhvn and <stamp>
// directly. Each operation is a short run of file calls on the calling thread, without
// retries; its error is the engine's own and shows no alert.
class LocalStorageHelper final : public AbstractStorageHelper, public StoredFileReading {
public:
    // Makes the engine, which becomes the one of local storage, dropping any before it.
    static std::shared_ptr<LocalStorageHelper> createLocalStorageHelper();
    // The storage folder as the settings hold it: the old place in the media folder is
    // moved to the new one, and a missing setting takes the new place.
    static void settleStoragePath();

    LocalStorageHelper();

    std::optional<std::string> errorMessage() const override;

    // The storage folder, made with the folders above it where it is missing; without it
    // the current engine falls back to the address book.
    void createStorageFolder();
    bool isLoggedIn() const { return true; }
    // Every backup of the storage folder goes: each history file and session folder. The
    // folder and anything else in it stay, since the setting may name a folder the user keeps
    // other files in.
    void eraseAllData();

    void flushCache() override;
    void resetAll() override {}
    void loadAvailableDeviceBackups() override;
    void loadBackupDetailsForDevice(const std::string& deviceName) override;
    void loadMostRecentBackupSession() override;
    void retrieveRestOfBackupHistory() override;
    void loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) override;
    std::optional<std::string> storedFilePath(const std::string& name, Date date,
                                              const std::optional<std::string>& subDirectory) override;
    void createDirectoryDated(Date date) override;
    void createDirectory(const std::string& directory, Date date) override;
    void uploadBackupHistory(const std::string& historyText, Date date) override;
    void uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) override;
    void deleteBackupSession(const std::shared_ptr<BackupSession>& session) override;
    void deleteBackupForDeviceId(const std::string& deviceName) override;
    void moveFromPath(const std::string& from, const std::string& to) override;
    double freeSpace() override;
    void refreshFreeSpace() override;
    std::int32_t fileSizeUploadLimit() override { return -1; }
    void showProgressOnView() override {}
    void hideProgress() override {}

protected:
    bool fetchHistoryFile(const std::string& name) override;

private:
    static std::string storagePath();
    // Where NAME of the session of DATE lies, in SUBDIRECTORY of its folder when given.
    static std::string sessionFilePath(const std::string& name, Date date,
                                       const std::optional<std::string>& subDirectory);
    void setErrorMessage(std::optional<std::string> message);
    // Copies a file of the storage folder into the temporary folder under the same
    // relative name; a copy never overwrites. False, with the error set, on failure.
    bool copyToTemporaryFolder(const std::string& relativePath);
    // Makes a directory below the storage folder for a request, and reports it.
    void createDirectoryForRequest(const std::string& relativePath);
    // Each folder of RELATIVEPATH below the storage folder for root alone.
    static bool makePrivate(const std::string& relativePath, std::string* error);
    static void logMisuse();

    mutable std::mutex errorMutex_;
    std::optional<std::string> errorMessage_;
};

}  // namespace stowhaven
