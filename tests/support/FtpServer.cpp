#include "support/FtpServer.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace stowhaven::test {

namespace {

constexpr const char* kPython = "/usr/bin/python3";
constexpr const char* kUser = "owner";
// A blank and quotes, as a user's password may hold them.
constexpr const char* kPassword = "open sesame's \"key\"";

}  // namespace

bool FtpServer::isAvailable() {
    static const bool available = ServerProcess::succeeds({kPython, "-c", "import pyftpdlib"});
    return available;
}

FtpServer::FtpServer(const FtpServerOptions& options) {
    std::vector<std::string> arguments{kPython,
                                       "-B",
                                       STOWHAVEN_SOURCE_DIR "/tests/support/ftp_server.py",
                                       root_.path().string(),
                                       "--user",
                                       kUser,
                                       "--password",
                                       kPassword};
    if (options.readLimit > 0) arguments.insert(arguments.end(), {"--read-limit", std::to_string(options.readLimit)});
    if (options.hostileListing) {
        setHostileListing(*options.hostileListing);
        arguments.insert(arguments.end(), {"--hostile-listing", listingFile()});
    }
    if (options.cutListing) arguments.emplace_back("--cut-listing");
    if (options.withoutMlsd) arguments.emplace_back("--no-mlsd");

    process_ = std::make_unique<ServerProcess>(arguments);
    const auto portLine = process_->waitForLine("port ");
    if (!process_->started() || !portLine) throw std::runtime_error("the FTP server of the tests didn't start");
    port_ = std::atoi(portLine->c_str() + 5);
}

FtpServer::~FtpServer() = default;

FtpAccount FtpServer::account() const {
    FtpAccount account;
    account.host = "127.0.0.1";
    account.port = port_;
    account.login = kUser;
    account.password = kPassword;
    return account;
}

void FtpServer::setHostileListing(const std::string& bytes) const {
    std::ofstream(listingFile(), std::ios::binary | std::ios::trunc) << bytes;
}

void FtpServer::stop() { process_->stop(); }

std::optional<std::string> FtpServer::waitForLine(const std::string& prefix) { return process_->waitForLine(prefix); }

}  // namespace stowhaven::test
