#pragma once

#include "storage/AbstractStorageHelper.h"
#include "storage/dropbox/DropboxReplies.h"
#include "storage/dropbox/DropboxService.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// Keeps sessions in the user's Dropbox, under the base directory of the setting
// "DropboxStoragePath" ("/Stowhaven"), through the service's version 1 interface, with the
// token pair that the terminal login stored (DropboxLogin). It makes its own requests and
// keeps its own error, having no wrapper.
//
// Made while Dropbox is current, it reads the account and the listings at once; an engine
// that can't (no app key, no link, a refused link, a listing that can't be trusted) gives way
// to local storage for this run with its error, and a link the service refuses is dropped.
// Folder operations, deletes, moves, copies and uploads are tried again as every engine's are
// (10 times, 5 seconds apart); an upload goes in chunks of 10 MB, and the local file goes
// once it is stored.
class DropboxHelper final : public AbstractStorageHelper,
                            public ConnectionOrientedStorageHelperProtocol,
                            public DefaultBackupDetailsLoading,
                            public StorageCopying,
                            public LoginCompletion {
public:
    static constexpr const char* kNotLinkedMessage = "No Dropbox account is linked";

    // Makes the engine, which becomes the one of Dropbox, dropping any before it.
    static std::shared_ptr<DropboxHelper> createDropboxHelper();
    // Forgets the stored tokens of every user; the engine, if made, is no longer linked.
    static void unlink();

    DropboxHelper();

    std::optional<std::string> errorMessage() const override;

    // With a link, reads the account and the listings and runs the success hook; without one
    // (the link is made by the terminal login), gives way to local storage.
    void connect() override;
    // Forgets the link.
    void disconnect() override;
    bool isLoggedIn() override;
    // The account's display name.
    std::string accountName() override;
    void loginControllerDidLogin() override;
    void loginControllerDidCancel() override;

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
    void copyFromPath(const std::string& from, const std::string& to) override;
    // Megabytes: the quota less what is used, lowered by each upload.
    double freeSpace() override { return freeSpace_; }
    // Reads the quota again, in the background.
    void refreshFreeSpace() override;
    std::int32_t fileSizeUploadLimit() override { return 15000; }
    // The transfers post their banner text themselves.
    void showProgressOnView() override {}
    void hideProgress() override {}

    // The account, its quota and the storage's structure read; false, with the error, when
    // they couldn't be. A link that the service refuses is dropped.
    bool loadAccountInfos();

protected:
    bool fetchHistoryFile(const std::string& name) override;

private:
    // The app and the link of the settings; the account read when there is network.
    void setupDropboxSession();
    void setErrorMessage(std::optional<std::string> message);
    std::shared_ptr<DropboxService> service() const;
    // The service of the link, the error of the request in hand cleared; none, with the
    // error, without a link.
    std::shared_ptr<DropboxService> linkedService();
    void forgetLink();
    void fallBackToLocalStorage();
    // Ends a request by its outcome.
    void finish(bool succeeded, const HookObject& object = {});

    std::string deviceDirectory() const;
    std::string sessionDirectory(Date date) const;
    // Names from listings, sessions and callers each name one entry of a folder; false, with
    // the error, for one that doesn't.
    bool isCleanRelativePath(const std::string& path);

    // The device directories, the device directory of older versions renamed, this device's
    // made on a first run on the account, then its history files.
    bool setupInitialStorageStructure();
    bool listDeviceFolders();
    bool listHistoryFiles();
    // MISSING tells a folder that isn't there.
    std::optional<std::vector<dropbox::Entry>> listFolder(const std::string& path, bool* missing = nullptr);
    // The folder made, or there already when it is the base or the device directory.
    bool createFolderAtPath(const std::string& path);
    bool deleteDataAtPath(const std::string& path);
    void copyFrom(const std::string& from, const std::string& to, bool asCopy);
    // Into the temporary folder under NAME, which must be one clean path component.
    std::optional<std::string> getFileFrom(const std::string& remotePath, const std::string& name);
    // Stores the local file as TARGET and removes it; false, with the error, when it couldn't.
    bool uploadFromPath(const std::string& source, const std::string& target);

    static constexpr double kMegabytesPerByte = 9.5367431640625e-07;

    std::string mainDirectory_;
    std::atomic<double> freeSpace_{0};

    mutable std::mutex mutex_;
    std::optional<std::string> errorMessage_;
    std::shared_ptr<DropboxService> service_;
    std::optional<dropbox::Account> account_;
};

}  // namespace stowhaven
