#pragma once

#include "net/Transfer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// Where a WebDAV share is and who logs in to it.
struct WebDavAccount {
    // Scheme, host and port, and any path before the share's paths: "https://cloud.example.net:8443".
    std::string baseUrl;
    std::string login;
    std::string password;
};

// One entry of a folder's listing, its name decoded.
struct WebDavEntry {
    std::string name;
    bool isDirectory = false;
    std::int64_t size = 0;
};

// A client of one WebDAV server over HTTP or HTTPS (a self-signed certificate accepted),
// with Basic authentication on every request and the connection kept between calls. Paths
// are absolute on the server ("/owncloud/remote.php/webdav/Stowhaven/iPhone") and are
// percent-encoded by the client. Each call blocks and answers false (or nothing) on failure,
// leaving lastError(). Names that come from the server are data: a listing with a name that
// is not one clean path component is refused as a whole, as is a reply that is no
// multistatus, too large, too deep, or cut short; a redirect is never followed. Calls must
// not overlap, nor run while a transfer of this client runs.
class WebDavClient {
public:
    explicit WebDavClient(WebDavAccount account);
    ~WebDavClient();
    WebDavClient(const WebDavClient&) = delete;
    WebDavClient& operator=(const WebDavClient&) = delete;

    // The entries of a folder (PROPFIND, depth 1), without the folder itself.
    std::optional<std::vector<WebDavEntry>> list(const std::string& folder);
    // The entry itself (PROPFIND, depth 0): its size, whether it is a folder.
    std::optional<WebDavEntry> entry(const std::string& path);
    bool createFolder(const std::string& path);
    // MOVE with Overwrite "T".
    bool move(const std::string& from, const std::string& to);
    // A file, or a folder with everything in it.
    bool remove(const std::string& path);

    // PUT of the local file, Content-Length its size; GET streamed to the local path, which
    // holds nothing after a failure. A transfer runs on a thread of its own while the caller
    // polls it; it is never null.
    std::unique_ptr<Transfer> startUpload(const std::string& localPath, const std::string& remotePath);
    std::unique_ptr<Transfer> startDownload(const std::string& remotePath, const std::string& localPath);

    // What went wrong last, one printable line, never the password: "Request failed: not
    // found (404)" for a missing path, "You have entered bad credentials. " for a refused
    // login (401), else the status or what the connection did.
    std::string lastError() const;

private:
    struct Connection;
    std::unique_ptr<Connection> connection_;
};

}  // namespace stowhaven
