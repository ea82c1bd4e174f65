// Uploads of one 256 MiB file to the tests' WebDAV share (Apache httpd with mod_dav on
// 127.0.0.1), through WebDavClient and through `curl -T` (UploadComparison.h), over plain
// HTTP; each side makes its own connection per upload.
//
//   build/bench/webdav_upload_benchmark [ROUNDS]     (3 rounds unless told)

#include "UploadComparison.h"
#include "net/WebDavClient.h"
#include "support/TestFolder.h"
#include "support/WebDavServer.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace stowhaven {
namespace {

constexpr auto kLongestUpload = std::chrono::minutes(10);

int run(int rounds) {
    if (!test::WebDavServer::isAvailable()) {
        std::cerr << "The benchmark needs Apache httpd with mod_dav (Debian's apache2 and apache2-utils)\n";
        return 1;
    }
    test::WebDavServer server;
    const WebDavAccount account = server.account();
    const std::string share = test::WebDavServer::kSharePath;
    const test::TestFolder local;
    const std::string file = local / "upload.bin";
    bench::writeRandomFile(file);
    const auto client = [&](const std::string& path) {
        const auto start = std::chrono::steady_clock::now();
        WebDavClient webDav(account);
        const auto transfer = webDav.startUpload(path, share + "/client.bin");
        if (!transfer->waitUntilFinished(kLongestUpload) || !transfer->succeeded()) {
            std::cerr << "WebDavClient's upload failed: " << transfer->error() << "\n";
            return -1.0;
        }
        return bench::secondsSince(start);
    };
    const auto curl = [&](const std::string& path) {
        return bench::timeCurl({"--silent", "--show-error", "--fail", "--insecure", "--output", "/dev/null", "--user",
                                account.login + ":" + account.password, "-T", path,
                                account.baseUrl + share + "/curl.bin"});
    };
    const auto roundDone = [&] {
        const bool whole = std::filesystem::file_size(server.shareFolder() / "client.bin") == bench::kFileBytes &&
                           std::filesystem::file_size(server.shareFolder() / "curl.bin") == bench::kFileBytes;
        std::filesystem::remove(server.shareFolder() / "client.bin");
        std::filesystem::remove(server.shareFolder() / "curl.bin");
        return whole;
    };
    return bench::compareUploads("WebDavClient", rounds, file, client, curl, roundDone);
}

}  // namespace
}  // namespace stowhaven

int main(int argc, char** argv) { return stowhaven::run(argc > 1 ? std::max(1, std::atoi(argv[1])) : 3); }
