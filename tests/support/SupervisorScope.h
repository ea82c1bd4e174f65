#pragma once

#include "core/Supervisor.h"
#include "platform/DeviceFacts.h"
#include "support/DeviceRootScope.h"
#include "support/FakeServices.h"
#include "support/RecordingScreenPorts.h"
#include "support/TestFolder.h"

#include <optional>
#include <string>
#include <vector>

namespace stowhaven::test {

// A fresh Supervisor for one test, on a device root of the test's own or the one given,
// with doubles of every platform service and screen port, and the main queue served by the
// test's thread. The Supervisor is made on the first call of supervisor(), so that a test
// can lay the device out first. The settings flags that it and the catalogue read start
// as at a first launch, and are put back afterwards.
class SupervisorScope {
public:
    // The facts of the pinned device below stand for those of the root's own.
    static const DeviceFacts kPinnedDevice;

    // A root of its own, with the pinned device's facts.
    SupervisorScope();
    // ROOT, with the facts that it holds.
    explicit SupervisorScope(const std::string& root);
    ~SupervisorScope();
    SupervisorScope(const SupervisorScope&) = delete;
    SupervisorScope& operator=(const SupervisorScope&) = delete;

    Supervisor& supervisor() { return Supervisor::shared(); }
    // "<root>/usr/bin/x" for "/usr/bin/x".
    std::string path(const std::string& devicePath) const { return root_ + devicePath; }
    // An empty file on the device, with the folders above it.
    void makeFile(const std::string& devicePath) const;
    // Runs what waits on the main queue, and what that sends in turn.
    void serveMainQueue();
    // A fresh Supervisor on the next use, as at a new start (after the device's facts were
    // pinned anew, say); what the old one left on the main queue runs first.
    void restartSupervisor();

    FakeServices services;
    ScreenPortsScope screens;

private:
    void startAsAFirstLaunch();

    std::vector<bool> savedFlags_;
    std::optional<TestFolder> folder_;
    std::string root_;
    DeviceRootScope rootScope_;
};

}  // namespace stowhaven::test
