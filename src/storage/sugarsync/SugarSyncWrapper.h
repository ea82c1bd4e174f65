#pragma once

#include "storage/AbstractStorageWrapper.h"
#include "storage/sugarsync/SugarSyncClient.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The service side of the SugarSync engine: the login with the user's own credentials, the
// user record and the Magic Briefcase, and one call per request, each addressed by a
// reference the service handed out. Every call blocks and answers whether it succeeded; a
// failure leaves its account as the error.
class SugarSyncWrapper final : public AbstractStorageWrapper {
public:
    SugarSyncWrapper();

    SugarSyncClient& client() { return client_; }

    // Logs in with these credentials, then reads the user record and makes sure the
    // product's folder and this device's folder are in the Magic Briefcase (storageUtilization).
    // With STORING, the credentials and the token's expiry are kept in the settings once it
    // all worked; nothing is stored on a failure.
    bool logIn(const std::string& user, const std::string& password, bool storing);
    // The stored login and password, trimmed; none when either is missing.
    static std::optional<std::pair<std::string, std::string>> storedCredentials();
    bool isLoggedIn() { return client_.session().isLoggedIn(); }
    std::string userName() { return client_.session().userName(); }
    // "limit" less "usage" of the quota, as the service gives them.
    double freeSpace() const;

    // The user record, then the Magic Briefcase's contents.
    bool storageUtilization();
    // The reference of the Magic Briefcase's folder of exactly that (undecoded) name.
    std::optional<std::string> getBriefcaseFolderRef(const std::string& displayName);
    // The folders, and the files whose content is on the server, of the folder.
    std::optional<std::vector<SugarSyncEntry>> getFolderContent(const std::optional<std::string>& ref);
    std::optional<std::string> createFolder(const std::string& name, const std::string& inFolderRef);
    std::optional<std::string> createFile(const std::string& name, const std::string& mediaType,
                                          const std::string& inFolderRef);
    bool putDataPath(const std::string& path, const std::string& fileRef);
    bool downloadFileData(const std::string& fileData, const std::string& path);
    // A folder goes with everything in it, child by child, since the service would only
    // orphan them; a child that fails doesn't stop the walk.
    bool deleteRef(const std::string& ref, bool isFolder);
    bool renameRef(const std::string& ref, const std::string& name);

    // Ends the session: the token and the stored credentials are forgotten.
    void disconnect();
    // Removes the stored login, password and expiry.
    static void unlink();

private:
    // The product's folder and this device's folder in it, found, renamed from the device's
    // identifier as older versions named it, or made.
    bool retrieveBriefcaseContents();
    // The device's folder in the product's folder: true once it is there.
    bool ensureDeviceFolder(const std::string& productRef);
    bool deleteTree(const std::string& ref, bool isFolder, int depth);

    SugarSyncClient client_;
    mutable std::mutex mutex_;
    double limit_ = 0;
    double usage_ = 0;
    std::string magicBriefcaseLink_;
    std::vector<SugarSyncEntry> briefcaseContents_;
};

}  // namespace stowhaven
