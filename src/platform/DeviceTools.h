#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// What the shell needs so that the device's tools act on the current device root:
// small shims for the device tools the host lacks, and for a root other than "/" the
// variables and the apt configuration that keep dpkg and apt-get on that root's own
// database, log, lists and caches.
class DeviceTools {
public:
    // The environment ("NAME=value") that a command of the device runs with.
    static std::vector<std::string> environment();

    // The apt configuration for a device root other than "/".
    static std::string aptConfiguration(const std::string& root);
};

}  // namespace stowhaven
