#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace stowhaven::bench {

// One 256 MiB file uploaded in turn through one of the system's clients and through curl's
// own tool (`curl -T`) to the same server, round after round in one run, so that both meet
// the same server on the same machine. Target: the client's throughput is at least 0.9 of
// curl's (the ratio of the medians).
constexpr std::int64_t kFileBytes = 256LL * 1024 * 1024;
constexpr double kTargetRatio = 0.9;

// An upload of FILE; answers its seconds, or a negative number when it failed.
using Upload = std::function<double(const std::string& file)>;

// Writes kFileBytes of random bytes to PATH.
void writeRandomFile(const std::string& path);
// Seconds of curl run with ARGUMENTS (without "curl" itself), or -1 when it failed.
double timeCurl(const std::vector<std::string>& arguments);
// Seconds since START.
double secondsSince(std::chrono::steady_clock::time_point start);

// Runs ROUNDS rounds of OURS (named CLIENT in the report) and CURL on FILE; after each,
// ROUNDDONE checks that the server holds both whole files and clears them. Prints each
// round and the medians with their ratio; answers the program's exit status.
int compareUploads(const std::string& client, int rounds, const std::string& file, const Upload& ours,
                   const Upload& curl, const std::function<bool()>& roundDone);

}  // namespace stowhaven::bench
