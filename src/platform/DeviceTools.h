#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// What the shell needs so that the device's tools act on the current device root:
// small shims for the device tools the host lacks, and for a root other than "/" the
// variables and the apt configuration that keep dpkg and apt-get on that root's own
// database, log, lists and caches. The shims and the configuration live in a private
// folder of their own, <var>/lib/stowhaven/tools, at the end of the tools' search path.
class DeviceTools {
public:
    // The environment ("NAME=value") that a command of the device runs with: the program's
    // own, less what is the program's alone (the user's encryption key).
    static std::vector<std::string> environment();

    // The apt configuration for a device root other than "/".
    static std::string aptConfiguration(const std::string& root);
};

}  // namespace stowhaven
