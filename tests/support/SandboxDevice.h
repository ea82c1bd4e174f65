#pragma once

#include "support/ProgramRun.h"
#include "support/TestFolder.h"

#include <string>
#include <vector>

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

    // The described device as a firmware upgrade leaves it, to restore onto: the same
    // identity and App Store applications with empty data containers, only firmware and
    // mobilesubstrate installed, every package of the description in the local repository
    // for apt-get, no Cydia sources, no package data, stock data, photos or other personal
    // files. Built once per build folder like the described device, and cached apart.
    static SandboxDevice fresh(const std::string& description);

    const std::string& root() const { return root_; }
    std::string path(const std::string& devicePath) const { return root_ + devicePath; }

    // The program run on this device: `stowhaven --root ROOT ARGUMENTS` after ENVIRONMENT.
    ProgramOutcome run(const std::string& arguments, const std::string& environment = "") const;
    // Each of those settings turned on; false when the program refused one.
    bool turnOn(const std::vector<std::string>& keys) const;
    // The scans of packages, stock data and other options, which a backup of everything and
    // its restore need.
    bool turnOnScans() const {
        return turnOn({"AutoScanPkgEnabled", "AutoScanStockAppsEnabled", "AutoScanOtherOptionsEnabled"});
    }

private:
    SandboxDevice(const std::string& description, bool fresh);

    TestFolder folder_;
    std::string root_;
};

// Runs a command line of the test's own (not through the system's shell) and answers its
// standard output; fails the test when the command fails.
std::string runCommand(const std::string& command);

}  // namespace stowhaven::test
