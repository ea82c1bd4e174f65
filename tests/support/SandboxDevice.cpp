#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <stdexcept>

namespace stowhaven::test {

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

SandboxDevice::SandboxDevice(const std::string& description) : root_(folder_ / "device") {
    const std::string source = STOWHAVEN_SOURCE_DIR;
    runCommand(source + "/scripts/make-device " + root_ + " --description " + source + "/tests/fixtures/devices/" +
               description + ".json");
}

SandboxDevice::SandboxDevice(const SandboxDevice& original, const std::string& copyName)
    : root_(folder_ / copyName) {
    runCommand("cp -a " + original.root() + " " + root_);
}

}  // namespace stowhaven::test
