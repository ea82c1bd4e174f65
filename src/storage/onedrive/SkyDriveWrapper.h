#pragma once

#include "storage/AbstractStorageWrapper.h"
#include "storage/onedrive/SkyDriveQuery.h"
#include "storage/onedrive/SkyDriveReplies.h"
#include "storage/onedrive/SkyDriveService.h"
#include "storage/onedrive/SkyDriveTokens.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The service side of the OneDrive engine. OneDrive addresses everything by id, so the wrapper
// holds the account's top folder, the product folder "Stowhaven" and this device's folder, and
// lists folders to turn names into ids. Every file goes up under its name with ".pdf" added.
// Each call blocks; a failure leaves the service's message as the error and answers none or
// false.
class SkyDriveWrapper final : public AbstractStorageWrapper {
public:
    SkyDriveWrapper();

    const SkyDriveService& service() const { return service_; }
    SkyDriveTokens& tokens() { return *tokens_; }

    // An access token is held.
    bool isLoggedIn() const { return tokens_->hasAccessToken(); }
    std::string accountName() const;
    // The quota's "available", in bytes.
    double freeSpace() const { return freeSpace_; }

    bool retrieveAccountName();
    bool retrieveQuota();
    // The top folder, then the product folder found in any case or made, then this device's
    // folder: found by the device's name, or by the identifier older versions named it after
    // (then renamed), or made.
    bool retrieveRootFolder();
    std::optional<SkyDriveEntry> mainDirectoryData() const;
    std::optional<SkyDriveEntry> rootDirectoryData() const;

    // The folder's children, each marked as lying in it.
    std::optional<std::vector<SkyDriveEntry>> loadFileListFrom(const std::string& folderId);
    std::optional<SkyDriveEntry> createDirectory(const std::string& name, const std::string& parentId);
    // The local file sent into the folder under its own name with ".pdf" added; a name taken
    // there fails, and the file stored stays as it is.
    std::optional<SkyDriveEntry> uploadFile(const std::string& localPath, const std::string& folderId);
    // The file's bytes, fetched from the address the service sends to, to LOCALPATH.
    bool downloadFileData(const std::string& id, const std::string& localPath);
    // A folder goes with everything in it.
    bool deleteFileData(const std::string& id);
    bool rename(const std::string& id, const std::string& name);

    // Forgets the tokens and the folders: the link with the account is over.
    void disconnect();

    // The name a file was stored under, the ".pdf" the upload added taken off.
    static std::string localName(const std::string& remoteName);

private:
    // The account's top folder.
    std::optional<SkyDriveEntry> topFolder();
    std::optional<SkyDriveEntry> findOrMakeFolder(const std::string& parentId, const std::string& name);
    std::optional<SkyDriveEntry> deviceFolder(const std::string& mainId);
    // The app's credentials and an access token are there; else the error says which isn't.
    bool isReady();
    std::optional<RestReply> call(const RestRequest& request);
    template <typename Reader>
    auto read(const std::optional<RestReply>& reply, Reader reader)
        -> decltype(reader(std::string_view(), std::declval<std::string&>()));

    SkyDriveService service_;
    std::shared_ptr<SkyDriveTokens> tokens_;
    SkyDriveQuery query_;
    std::atomic<double> freeSpace_{0};
    mutable std::mutex mutex_;
    std::string accountName_;
    std::optional<SkyDriveEntry> mainDirectoryData_;
    std::optional<SkyDriveEntry> rootDirectoryData_;
};

}  // namespace stowhaven
