#pragma once

#include "storage/RemoteFolderStorageHelper.h"
#include "storage/ServerCredentials.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

// Where ownCloud keeps its current connection and saved hosts.
extern const ServerSettings kOwnCloudSettings;

// Keeps sessions on the user's own ownCloud or other WebDAV share, under <root>/<device
// name>, through OwnCloudWrapper, with the current connection of the settings. Device
// folders are left to the user: a folder of an older version, named after the device's
// identifier, stays out of the list, and renames and deletes of device folders are refused.
class OwnCloudHelper final : public RemoteFolderStorageHelper {
public:
    // Makes the engine, which becomes the one of ownCloud, dropping any before it; it
    // connects at once when ownCloud is the current engine.
    static std::shared_ptr<OwnCloudHelper> createOwnCloudHelper();

    explicit OwnCloudHelper(const ServerCredentials& credentials);

    // The share's URL and the root.
    std::string accountName() override;
    std::int32_t fileSizeUploadLimit() override { return 32767; }

protected:
    std::string rootDirectory() const override;
    std::optional<std::string> missingCredentials() const override;
    void takeDeviceFolders() override;
    bool movesDeviceFolders() const override { return false; }
    std::string notificationPrefix() const override { return "OWNCLOUD"; }

private:
    const ServerCredentials& credentials() const;
};

}  // namespace stowhaven
