#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// What the shell needs so that the device's tools act on the current device root:
// small shims for the device tools the host lacks, and for a root other than "/" the
// variables and the apt configuration that keep dpkg and apt-get on that root's own
// database, log, lists and caches. The shims and the configuration live in a private
// folder of their own, <var>/lib/stowhaven/tools: on the device itself at the end of the
// tools' search path, for what the device lacks; on another root first, so that no tool of
// the host that is not the device's (another plutil) stands in for the device's.
class DeviceTools {
public:
    struct Setting {
        // The environment ("NAME=value"): the program's own, less what is the program's
        // alone (the user's encryption key).
        std::vector<std::string> environment;
        // What a command line puts first on its search path, before the environment's.
        std::string searchPathFront;
    };

    // What a command of the device runs with; nothing on a root other than "/" whose tool
    // folder can't be made the program's own, where dpkg and apt-get would otherwise act on
    // the host's own database.
    static std::optional<Setting> forCurrentRoot();

    // The apt configuration for a device root other than "/".
    static std::string aptConfiguration(const std::string& root);
};

}  // namespace stowhaven
