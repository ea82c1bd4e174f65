// Uploads of one 256 MiB file to the tests' FTP server on 127.0.0.1, through FtpClient and
// through curl's own tool (`curl -T`), in turn and in one run, so that both meet the same
// server on the same machine. Each side makes its own connection and login per upload.
// Target: the client's throughput is at least 0.9 of curl's (the ratio of the medians).
//
//   build/bench/ftp_upload_benchmark [ROUNDS]     (3 rounds unless told)

#include "net/FtpClient.h"
#include "support/FtpServer.h"
#include "support/TestFolder.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

extern char** environ;

namespace stowhaven {
namespace {

constexpr std::int64_t kFileBytes = 256LL * 1024 * 1024;
constexpr double kTargetRatio = 0.9;
constexpr auto kLongestUpload = std::chrono::minutes(10);

void writeRandomFile(const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    std::mt19937_64 generator(42);
    std::vector<std::uint64_t> block(1 << 17);
    for (std::int64_t written = 0; written < kFileBytes; written += static_cast<std::int64_t>(block.size() * 8)) {
        for (auto& word : block) word = generator();
        file.write(reinterpret_cast<const char*>(block.data()), static_cast<std::streamsize>(block.size() * 8));
    }
}

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Seconds of one upload through the client; negative when it failed.
double uploadThroughClient(const FtpAccount& account, const std::string& file, const std::string& remotePath) {
    const auto start = std::chrono::steady_clock::now();
    FtpClient client(account);
    const auto transfer = client.startUpload(file, remotePath);
    if (!transfer->waitUntilFinished(kLongestUpload) || !transfer->succeeded()) {
        std::cerr << "FtpClient's upload failed: " << transfer->error() << "\n";
        return -1;
    }
    return secondsSince(start);
}

// Seconds of one upload through `curl -T`; negative when it failed.
double uploadThroughCurl(const FtpAccount& account, const std::string& file, const std::string& remotePath) {
    const std::string url = fmt::format("ftp://{}:{}/%2F{}", account.host, account.port, remotePath.substr(1));
    const std::string user = account.login + ":" + account.password;
    std::vector<std::string> arguments{"curl", "--silent", "--show-error", "--user", user, "-T", file, url};
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = -1;
    int status = 0;
    if (posix_spawnp(&child, "curl", nullptr, nullptr, argv.data(), environ) != 0 ||
        waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::cerr << "curl's upload failed\n";
        return -1;
    }
    return secondsSince(start);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double mebibytesPerSecond(double seconds) { return static_cast<double>(kFileBytes) / (1024.0 * 1024.0) / seconds; }

int run(int rounds) {
    if (!test::FtpServer::isAvailable()) {
        std::cerr << "The benchmark needs /usr/bin/python3 with pyftpdlib (Debian's python3-pyftpdlib)\n";
        return 1;
    }
    test::FtpServer server;
    const test::TestFolder local;
    const std::string file = local / "upload.bin";
    writeRandomFile(file);
    std::vector<double> client;
    std::vector<double> curl;
    for (int round = 1; round <= rounds; ++round) {
        const double ours = uploadThroughClient(server.account(), file, "/client.bin");
        const double theirs = uploadThroughCurl(server.account(), file, "/curl.bin");
        if (ours < 0 || theirs < 0) return 1;
        if (std::filesystem::file_size(server.folder() / "client.bin") != kFileBytes ||
            std::filesystem::file_size(server.folder() / "curl.bin") != kFileBytes) {
            std::cerr << "The server doesn't hold the whole file\n";
            return 1;
        }
        std::filesystem::remove(server.folder() / "client.bin");
        std::filesystem::remove(server.folder() / "curl.bin");
        client.push_back(ours);
        curl.push_back(theirs);
        std::cout << fmt::format("round {}: FtpClient {:.3f} s ({:.1f} MiB/s), curl -T {:.3f} s ({:.1f} MiB/s)\n",
                                 round, ours, mebibytesPerSecond(ours), theirs, mebibytesPerSecond(theirs));
    }
    const double ratio = median(curl) / median(client);
    std::cout << fmt::format(
        "median of {} rounds of 256 MiB: FtpClient {:.1f} MiB/s, curl -T {:.1f} MiB/s, ratio {:.2f} (target {:.1f}): "
        "{}\n",
        rounds, mebibytesPerSecond(median(client)), mebibytesPerSecond(median(curl)), ratio, kTargetRatio,
        ratio >= kTargetRatio ? "met" : "NOT met");
    return 0;
}

}  // namespace
}  // namespace stowhaven

int main(int argc, char** argv) { return stowhaven::run(argc > 1 ? std::max(1, std::atoi(argv[1])) : 3); }
