#pragma once

#include "net/FtpClient.h"
#include "storage/RemoteFolders.h"
#include "storage/ServerCredentials.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The FTP server of the credentials, its error the server's reply.
class FTPWrapper final : public RemoteFolders {
public:
    explicit FTPWrapper(ServerCredentials credentials);
    ~FTPWrapper() override;

    const ServerCredentials& credentials() const { return credentials_; }
    bool isLoggedIn() const override;
    void disconnect() override;
    // "ftp://login@host:port/root {passive}".
    std::string description() const override;

    std::optional<std::vector<RemoteEntry>> listDirectory(const std::string& path) override;
    bool createDirectory(const std::string& path) override;
    bool deleteTree(const std::string& path) override;
    bool deleteFile(const std::string& path) override;
    bool rename(const std::string& from, const std::string& to) override;
    bool uploadFromPath(const std::string& localPath, const std::string& remoteFolder) override;
    bool getFile(const std::string& remotePath, const std::string& localPath) override;

private:
    // The connection, made when there is none; null, with the error, when it can't be.
    FtpClient* server();
    // Takes the client's last error as the engine's, and answers false.
    bool failed();
    bool endTransfer(bool succeeded);

    ServerCredentials credentials_;
    std::unique_ptr<FtpClient> server_;
};

}  // namespace stowhaven
