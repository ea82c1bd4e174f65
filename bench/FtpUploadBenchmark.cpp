// Uploads of one 256 MiB file to the tests' FTP server on 127.0.0.1, through FtpClient and
// through `curl -T` (UploadComparison.h). Each side makes its own connection and login per
// upload.
//
//   build/bench/ftp_upload_benchmark [ROUNDS]     (3 rounds unless told)

#include "UploadComparison.h"
#include "net/FtpClient.h"
#include "support/FtpServer.h"
#include "support/TestFolder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace stowhaven {
namespace {

constexpr auto kLongestUpload = std::chrono::minutes(10);

int run(int rounds) {
    if (!test::FtpServer::isAvailable()) {
        std::cerr << "The benchmark needs /usr/bin/python3 with pyftpdlib (Debian's python3-pyftpdlib)\n";
        return 1;
    }
    test::FtpServer server;
    const FtpAccount account = server.account();
    const test::TestFolder local;
    const std::string file = local / "upload.bin";
    bench::writeRandomFile(file);
    const auto client = [&](const std::string& path) {
        const auto start = std::chrono::steady_clock::now();
        FtpClient ftp(account);
        const auto transfer = ftp.startUpload(path, "/client.bin");
        if (!transfer->waitUntilFinished(kLongestUpload) || !transfer->succeeded()) {
            std::cerr << "FtpClient's upload failed: " << transfer->error() << "\n";
            return -1.0;
        }
        return bench::secondsSince(start);
    };
    const auto curl = [&](const std::string& path) {
        return bench::timeCurl({"--silent", "--show-error", "--user", account.login + ":" + account.password, "-T",
                                path, fmt::format("ftp://{}:{}/%2Fcurl.bin", account.host, account.port)});
    };
    const auto roundDone = [&] {
        const bool whole = std::filesystem::file_size(server.folder() / "client.bin") == bench::kFileBytes &&
                           std::filesystem::file_size(server.folder() / "curl.bin") == bench::kFileBytes;
        std::filesystem::remove(server.folder() / "client.bin");
        std::filesystem::remove(server.folder() / "curl.bin");
        return whole;
    };
    return bench::compareUploads("FtpClient", rounds, file, client, curl, roundDone);
}

}  // namespace
}  // namespace stowhaven

int main(int argc, char** argv) { return stowhaven::run(argc > 1 ? std::max(1, std::atoi(argv[1])) : 3); }
