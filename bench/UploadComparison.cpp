#include "UploadComparison.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <random>

extern char** environ;

namespace stowhaven::bench {

namespace {

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double mebibytesPerSecond(double seconds) { return static_cast<double>(kFileBytes) / (1024.0 * 1024.0) / seconds; }

}  // namespace

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

double timeCurl(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"curl"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& argument : command) argv.push_back(argument.data());
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

int compareUploads(const std::string& client, int rounds, const std::string& file, const Upload& ours,
                   const Upload& curl, const std::function<bool()>& roundDone) {
    std::vector<double> clientSeconds;
    std::vector<double> curlSeconds;
    for (int round = 1; round <= rounds; ++round) {
        const double mine = ours(file);
        const double theirs = curl(file);
        if (mine < 0 || theirs < 0) return 1;
        if (!roundDone()) {
            std::cerr << "The server doesn't hold the whole file\n";
            return 1;
        }
        clientSeconds.push_back(mine);
        curlSeconds.push_back(theirs);
        std::cout << fmt::format("round {}: {} {:.3f} s ({:.1f} MiB/s), curl -T {:.3f} s ({:.1f} MiB/s)\n", round,
                                 client, mine, mebibytesPerSecond(mine), theirs, mebibytesPerSecond(theirs));
    }
    const double ratio = median(curlSeconds) / median(clientSeconds);
    std::cout << fmt::format(
        "median of {} rounds of 256 MiB: {} {:.1f} MiB/s, curl -T {:.1f} MiB/s, ratio {:.2f} (target {:.1f}): {}\n",
        rounds, client, mebibytesPerSecond(median(clientSeconds)), mebibytesPerSecond(median(curlSeconds)), ratio,
        kTargetRatio, ratio >= kTargetRatio ? "met" : "NOT met");
    return 0;
}

}  // namespace stowhaven::bench
