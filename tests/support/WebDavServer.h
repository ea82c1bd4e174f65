#pragma once

#include "net/WebDavClient.h"
#include "support/ServerProcess.h"
#include "support/TestFolder.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven::test {

// How the test server behaves beyond a plain, well-mannered share. Any of the hostile
// choices puts a small stand-in server (tests/emulators/hostile_webdav.py) in Apache's place.
struct WebDavServerOptions {
    // HTTPS with a self-signed certificate made for the server.
    bool https = false;
    // Every PROPFIND gets these bytes as its 207 reply, whatever the folder holds.
    std::optional<std::string> hostileReply = std::nullopt;
    // Every reply announces more bytes than it sends, then the connection closes.
    bool cutShort = false;
    // Every request is answered "302 Found" to this URL.
    std::optional<std::string> redirectTo = std::nullopt;
    // The body of an upload is read this many bytes a second: slow enough to act during it.
    std::int64_t readLimit = 0;
};

// A real WebDAV share (Apache httpd with mod_dav) on 127.0.0.1, on a port picked at run
// time, configured in a folder of its own; one user, "owner", with Basic authentication and
// every right on the share at kSharePath. Stopped when the object goes.
class WebDavServer {
public:
    // Where the share is on the server; the local shareFolder() is behind it.
    static constexpr const char* kSharePath = "/owncloud/remote.php/webdav";

    explicit WebDavServer(const WebDavServerOptions& options = {});
    ~WebDavServer();
    WebDavServer(const WebDavServer&) = delete;
    WebDavServer& operator=(const WebDavServer&) = delete;

    // Whether Apache, its modules, htpasswd and openssl are installed; tests skip through
    // STOWHAVEN_SKIP_WITHOUT_WEBDAV_SERVER.
    static bool isAvailable();

    // "http(s)://127.0.0.1:PORT", user "owner" and its password (a blank and quotes in it).
    WebDavAccount account() const;
    // The local folder served at kSharePath.
    const std::filesystem::path& shareFolder() const { return share_; }
    // Replaces the bytes every PROPFIND and GET gets, on a hostile server.
    void setHostileReply(const std::string& bytes) const;
    // Kills the server now, as a crash would.
    void stop();
    // Waits for the hostile server to print a line that starts with PREFIX ("PUT /path")
    // and answers it; nothing when it ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix) { return process_->waitForLine(prefix); }

private:
    void startApache(const WebDavServerOptions& options);
    void startStandIn(const WebDavServerOptions& options);
    std::filesystem::path replyFile() const { return ownFiles_.path() / "reply"; }

    TestFolder ownFiles_;
    std::filesystem::path share_;
    std::unique_ptr<ServerProcess> process_;
    bool https_ = false;
    int port_ = 0;
};

}  // namespace stowhaven::test

#define STOWHAVEN_SKIP_WITHOUT_WEBDAV_SERVER()                                        \
    if (!::stowhaven::test::WebDavServer::isAvailable())                              \
    GTEST_SKIP() << "the WebDAV server of the tests needs Apache httpd with mod_dav " \
                    "(Debian's apache2 and apache2-utils) and openssl"
