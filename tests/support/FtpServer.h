#pragma once

#include "net/FtpClient.h"
#include "support/ServerProcess.h"
#include "support/TestFolder.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven::test {

// How the test server behaves beyond a plain, well-mannered server.
struct FtpServerOptions {
    // Bytes per second each data connection reads: an upload slow enough to act during it.
    std::int64_t readLimit = 0;
    // When set, every MLSD and LIST sends these bytes as the listing, whatever the folder holds.
    std::optional<std::string> hostileListing = std::nullopt;
    // Every MLSD answers "150" and then closes the control connection without "226".
    bool cutListing = false;
    // MLSD and MLST are commands the server doesn't know, as on older servers: it lists with LIST.
    bool withoutMlsd = false;
};

// A real FTP server (pyftpdlib) on 127.0.0.1, on a port the system picks, serving a fresh
// folder of its own to one user with every right; stopped when the object goes.
class FtpServer {
public:
    explicit FtpServer(const FtpServerOptions& options = {});
    ~FtpServer();
    FtpServer(const FtpServer&) = delete;
    FtpServer& operator=(const FtpServer&) = delete;

    // Whether /usr/bin/python3 has pyftpdlib; tests skip through STOWHAVEN_SKIP_WITHOUT_FTP_SERVER.
    static bool isAvailable();

    // The server's host, port, user "owner" and its password (a blank and quotes in it).
    FtpAccount account() const;
    // The local folder the server serves as its "/".
    const std::filesystem::path& folder() const { return root_.path(); }
    // Replaces the bytes every listing sends, on a server started with a hostile listing.
    void setHostileListing(const std::string& bytes) const;
    // Kills the server now, as a crash would.
    void stop();
    // Waits for the server to print a line that starts with PREFIX ("STOR ") and answers it;
    // nothing when the server ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix);

private:
    std::string listingFile() const { return ownFiles_ / "listing"; }

    TestFolder root_;
    TestFolder ownFiles_;
    std::unique_ptr<ServerProcess> process_;
    int port_ = 0;
};

}  // namespace stowhaven::test

#define STOWHAVEN_SKIP_WITHOUT_FTP_SERVER()                                              \
    if (!::stowhaven::test::FtpServer::isAvailable())                                    \
    GTEST_SKIP() << "the FTP server of the tests needs /usr/bin/python3 with pyftpdlib " \
                    "(Debian's python3-pyftpdlib)"
