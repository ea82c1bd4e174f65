#pragma once

#include "net/Transfer.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>

namespace stowhaven::test {

// What the tests of the network clients send and take back.

// Only a hung client makes a test wait this long.
inline constexpr std::chrono::minutes kLongestTransfer{2};

// COUNT bytes of every value, the same each run.
inline std::string randomBytes(std::size_t count) {
    std::mt19937 generator(7);
    std::string bytes(count, '\0');
    for (char& byte : bytes) byte = static_cast<char>(generator());
    return bytes;
}

inline void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readFile(const std::filesystem::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

inline bool transferSucceeds(std::unique_ptr<Transfer> transfer) {
    return transfer->waitUntilFinished(kLongestTransfer) && transfer->succeeded();
}

}  // namespace stowhaven::test
