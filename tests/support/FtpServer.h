#pragma once

#include "net/FtpClient.h"
#include "support/TestFolder.h"

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace stowhaven::test {

// How the test server behaves beyond a plain, well-mannered server.
struct FtpServerOptions {
    // Bytes per second each data connection reads: an upload slow enough to act during it.
    std::int64_t readLimit = 0;
    // When set, every MLSD sends these bytes as the listing, whatever the folder holds.
    std::optional<std::string> hostileListing = std::nullopt;
    // Every MLSD answers "150" and then closes the control connection without "226".
    bool cutListing = false;
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
    // Replaces the bytes every MLSD sends, on a server started with a hostile listing.
    void setHostileListing(const std::string& bytes) const;
    // Kills the server now, as a crash would.
    void stop();
    // Waits for the server to print a line that starts with PREFIX ("STOR ") and answers it;
    // nothing when the server ends first or a minute passes.
    std::optional<std::string> waitForLine(const std::string& prefix);

private:
    // Reads the server's output to its end, so that the server never waits on a full pipe.
    void readOutput(int output);
    void shutDown();
    std::string listingFile() const { return ownFiles_ / "listing"; }

    TestFolder root_;
    TestFolder ownFiles_;
    pid_t child_ = -1;
    int port_ = 0;
    std::mutex mutex_;
    std::condition_variable linesArrived_;
    std::deque<std::string> lines_;
    bool outputEnded_ = false;
    std::thread reader_;
};

}  // namespace stowhaven::test

#define STOWHAVEN_SKIP_WITHOUT_FTP_SERVER()                                              \
    if (!::stowhaven::test::FtpServer::isAvailable())                                    \
    GTEST_SKIP() << "the FTP server of the tests needs /usr/bin/python3 with pyftpdlib " \
                    "(Debian's python3-pyftpdlib)"
