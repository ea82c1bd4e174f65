#pragma once

#include "storage/RemoteFolderStorageHelper.h"
#include "storage/ServerCredentials.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

class FTPWrapper;

// Where FTP keeps its current connection and saved hosts.
extern const ServerSettings kFTPSettings;

// Keeps sessions on an FTP server of the user's, under <root>/<device name>, through
// FTPWrapper, with the current connection of the settings. A device folder named after the
// device's identifier, as older versions named it, takes the device's name.
class FTPHelper final : public RemoteFolderStorageHelper {
public:
    // Makes the engine, which becomes the one of FTP, dropping any before it; it connects
    // at once when FTP is the current engine.
    static std::shared_ptr<FTPHelper> createFTPHelper();

    explicit FTPHelper(const ServerCredentials& credentials);

    std::string accountName() override;
    std::int32_t fileSizeUploadLimit() override { return 2147483647; }

protected:
    std::string rootDirectory() const override;
    std::optional<std::string> missingCredentials() const override;
    std::string notificationPrefix() const override { return "FTP"; }

private:
    const ServerCredentials& credentials() const;
};

}  // namespace stowhaven
