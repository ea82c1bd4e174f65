#pragma once

#include "support/TestFolder.h"

#include <string>

namespace stowhaven::test {

// A device root made by the sandbox device builder from one of the descriptions in
// tests/fixtures/devices, in a folder of the test's own. Each description is built once
// per build folder and copied for each device; the copies share the local repository of
// the built one, which they only read.
class SandboxDevice {
public:
    explicit SandboxDevice(const std::string& description);
    // A copy of another device: cheaper than a new build, and free to change.
    SandboxDevice(const SandboxDevice& original, const std::string& copyName);

    const std::string& root() const { return root_; }
    std::string path(const std::string& devicePath) const { return root_ + devicePath; }

private:
    TestFolder folder_;
    std::string root_;
};

// Runs a command line of the test's own (not through the system's shell) and answers its
// standard output; fails the test when the command fails.
std::string runCommand(const std::string& command);

}  // namespace stowhaven::test
