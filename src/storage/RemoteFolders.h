#pragma once

#include "net/Transfer.h"
#include "storage/AbstractStorageWrapper.h"
#include "storage/TransferDisplay.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// One entry of a remote folder's listing; its name is one clean path component.
struct RemoteEntry {
    std::string name;
    bool isDirectory = false;
    bool isSymbolicLink = false;
    std::int64_t size = 0;
};

// The service side of an engine that keeps sessions in folders of a server by path (FTP,
// WebDAV): one connection made when first needed and kept between operations. Every
// operation blocks and answers whether it succeeded; on failure the engine's error is the
// server's account of it (never the password), in the text the user sees. A transfer shows
// its progress and ends when the job is canceled.
class RemoteFolders : public AbstractStorageWrapper {
public:
    virtual bool isLoggedIn() const = 0;
    virtual void disconnect() = 0;
    // What the log tells of the server and the account, without the password.
    virtual std::string description() const = 0;

    virtual std::optional<std::vector<RemoteEntry>> listDirectory(const std::string& path) = 0;
    virtual bool createDirectory(const std::string& path) = 0;
    // A folder with everything in it.
    virtual bool deleteTree(const std::string& path) = 0;
    virtual bool deleteFile(const std::string& path) = 0;
    virtual bool rename(const std::string& from, const std::string& to) = 0;
    // Sends the local file into the remote folder under its own name.
    virtual bool uploadFromPath(const std::string& localPath, const std::string& remoteFolder) = 0;
    // Fetches the remote file to the local path; nothing is left there after a failure.
    virtual bool getFile(const std::string& remotePath, const std::string& localPath) = 0;

    // PATH with each missing folder above it.
    bool createDirectoryWithParents(const std::string& path);

protected:
    // The size of a local file to send; nothing, with the error, when it is no file.
    std::optional<std::int64_t> sizeOfFileToSend(const std::string& localPath);
    // Follows a running transfer to its end, its progress shown and a cancel of the job
    // ending it; false, with the error, when it didn't succeed.
    bool followTransfer(Transfer& transfer, TransferDisplay::Direction direction, std::int64_t size);
};

}  // namespace stowhaven
