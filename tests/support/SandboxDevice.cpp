#include "support/SandboxDevice.h"

#include "platform/ShellQuote.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace stowhaven::test {

namespace fs = std::filesystem;

namespace {

// Everything a built device depends on: the description and the builder's sources.
std::size_t builderFingerprint(const fs::path& description) {
    std::string contents;
    std::vector<fs::path> files = {description};
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(STOWHAVEN_SOURCE_DIR) / "tests/fixtures")) {
        if (entry.path().extension() == ".py") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        contents += file.string();
        contents.append(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }
    return std::hash<std::string>{}(contents);
}

// Holds an exclusive lock on a file while it lives, so that test processes running at
// the same time build a device only once.
class FileLock {
public:
    explicit FileLock(const fs::path& path) : descriptor_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        if (descriptor_ < 0 || flock(descriptor_, LOCK_EX) != 0)
            throw std::runtime_error("can't lock " + path.string());
    }
    ~FileLock() { close(descriptor_); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int descriptor_;
};

// A device built once per description, variant and builder version, under the build folder.
fs::path cachedDevice(const std::string& name, bool fresh) {
    const fs::path description = fs::path(STOWHAVEN_SOURCE_DIR) / "tests/fixtures/devices" / (name + ".json");
    const fs::path cache = fs::path(STOWHAVEN_BINARY_DIR) / "sandbox-devices";
    fs::create_directories(cache);
    const std::string variant = fresh ? name + "-fresh" : name;
    const fs::path device = cache / (variant + "-" + std::to_string(builderFingerprint(description)));

    // Built in place, since a device names its own repository by its absolute path; the
    // mark says the build went through.
    FileLock lock(cache / (variant + ".lock"));
    const fs::path builtMark = device.string() + ".built";
    if (!fs::exists(builtMark)) {
        fs::remove_all(device);
        runCommand(ShellQuote::path(std::string(STOWHAVEN_SOURCE_DIR) + "/scripts/make-device") + " " +
                   ShellQuote::path(device.string()) + " --description " + ShellQuote::path(description.string()) +
                   (fresh ? " --fresh" : ""));
        std::ofstream(builtMark).put('\n');
    }
    return device;
}

}  // namespace

std::string runCommand(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("couldn't run: " + command);
    std::string output;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe)) output.append(buffer.data(), count);
    const int status = pclose(pipe);
    if (status != 0) throw std::runtime_error("failed (" + std::to_string(status) + "): " + command);
    return output;
}

SandboxDevice::SandboxDevice(const std::string& description) : SandboxDevice(description, false) {}

SandboxDevice::SandboxDevice(const std::string& description, bool fresh) : root_(folder_ / "device") {
    runCommand("cp -a " + ShellQuote::path(cachedDevice(description, fresh).string()) + " " + ShellQuote::path(root_));
}

SandboxDevice SandboxDevice::fresh(const std::string& description) { return SandboxDevice(description, true); }

SandboxDevice::SandboxDevice(const SandboxDevice& original, const std::string& copyName) : root_(folder_ / copyName) {
    runCommand("cp -a " + ShellQuote::path(original.root()) + " " + ShellQuote::path(root_));
}

ProgramOutcome SandboxDevice::run(const std::string& arguments, const std::string& environment) const {
    return runProgram("--root " + ShellQuote::path(root_) + " " + arguments, environment);
}

bool SandboxDevice::turnOn(const std::vector<std::string>& keys) const {
    for (const std::string& key : keys) {
        if (run("settings " + key + " true").status != 0) return false;
    }
    return true;
}

}  // namespace stowhaven::test
