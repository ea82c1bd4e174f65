#pragma once

#include "net/FtpClient.h"
#include "storage/AbstractStorageWrapper.h"
#include "storage/TransferDisplay.h"
#include "storage/ftp/FTPCredentials.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The FTP server side of the FTP engine: one connection to the server of the credentials,
// made when first needed and kept between operations, and the transfers with their
// progress. Every operation blocks and answers whether it succeeded; on failure the error
// is the server's reply (never the password), in the text the user sees.
class FTPWrapper final : public AbstractStorageWrapper {
public:
    explicit FTPWrapper(FTPCredentials credentials);
    ~FTPWrapper() override;

    const FTPCredentials& credentials() const { return credentials_; }
    // Logs in anew with the credentials; false, with the error, when the server refuses.
    bool connect();
    void disconnect();
    bool isLoggedIn() const;

    std::optional<std::vector<FtpEntry>> listDirectory(const std::string& path);
    bool createDirectory(const std::string& path);
    // Each missing folder of PATH, from the top.
    bool createDirectoryWithParents(const std::string& path);
    bool deleteTree(const std::string& path);
    bool deleteFile(const std::string& path);
    bool rename(const std::string& from, const std::string& to);

    // Sends the local file into the remote folder under its own name; the progress shows
    // on the banner and the bar, and a cancel of the job ends the transfer.
    bool uploadFromPath(const std::string& localPath, const std::string& remoteFolder);
    // Fetches the remote file to the local path, likewise.
    bool getFile(const std::string& remotePath, const std::string& localPath);

    // "ftp://login@host:port/root {passive}".
    std::string description() const { return credentials_.description(); }

private:
    // The connection, made when there is none; null, with the error, when it can't be.
    FtpClient* server();
    // Takes the client's last error as the engine's, and answers false.
    bool failed();
    bool runTransfer(FtpTransfer& transfer, TransferDisplay::Direction direction, std::int64_t size);

    FTPCredentials credentials_;
    std::unique_ptr<FtpClient> server_;
};

}  // namespace stowhaven
