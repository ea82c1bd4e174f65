#pragma once

#include "net/Transfer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// Where an FTP server is and who logs in to it.
struct FtpAccount {
    std::string host;
    int port = 21;
    std::string login;
    std::string password;
    // Passive mode (the client opens the data connection) unless false.
    bool passive = true;
};

// One entry of a folder's listing, as the server told it.
struct FtpEntry {
    std::string name;
    bool isDirectory = false;
    bool isSymbolicLink = false;
    std::int64_t size = 0;
};

// A client of one FTP server, on one control connection kept open between calls. Paths
// are absolute on the server ("/Stowhaven/iPhone/2026-11-24_10~00~00"). Each call blocks
// and answers false (or nothing) on failure, leaving lastError(). Names that come from the
// server are data: a listing with a name the client can't take as one path component
// (empty, ".", "..", "/", a control character) is refused as a whole. Calls must not
// overlap, nor run while a transfer of this client runs.
class FtpClient {
public:
    explicit FtpClient(FtpAccount account);
    ~FtpClient();
    FtpClient(const FtpClient&) = delete;
    FtpClient& operator=(const FtpClient&) = delete;

    // Connects and logs in, 15 seconds at most to connect; binary type.
    bool connect();
    bool isConnected() const;
    void disconnect();

    bool createDirectory(const std::string& path);
    bool removeDirectory(const std::string& path);
    bool deleteFile(const std::string& path);
    // The folder with everything below it.
    bool deleteTree(const std::string& path);
    // The files of DIRECTORY whose names match the shell-style PATTERN ("*.stowhvn").
    bool deleteMatching(const std::string& directory, const std::string& pattern);
    bool rename(const std::string& from, const std::string& to);
    // The entries of a folder, without "." and "..": by MLSD, or by LIST from a server that
    // answers MLSD as a command it doesn't know (500, 501, 502, 504).
    std::optional<std::vector<FtpEntry>> list(const std::string& directory);
    std::optional<std::int64_t> sizeOf(const std::string& path);

    // A transfer runs on a thread of its own while the caller polls it; it is never null.
    std::unique_ptr<Transfer> startUpload(const std::string& localPath, const std::string& remotePath);
    std::unique_ptr<Transfer> startDownload(const std::string& remotePath, const std::string& localPath);

    // What went wrong last: the server's reply where it gave one, else what the connection
    // did; never the password.
    std::string lastError() const;

private:
    struct Connection;
    std::unique_ptr<Connection> connection_;
};

}  // namespace stowhaven
