#include "platform/Shell.h"

#include "platform/DeviceRoot.h"
#include "platform/Log.h"

#include <fmt/format.h>

namespace stowhaven {

// The program keeps what it makes for root alone (umask 077), but the device's tools write
// the device's own files, which other users' programs read: dpkg rewriting its status file,
// apt-get its lists, tar restoring a folder. They work with the device's usual umask, 022.
// What the program stores of a session it makes private itself, by explicit modes.
std::string Shell::wrap(const std::string& command, const std::string& searchPathFront) {
    return fmt::format("umask 022; export PATH={}:$PATH; ({}) > /dev/null 2>&1; echo Done", searchPathFront, command);
}

void Shell::executeOnRunningSystem(const std::string& command) {
    if (!DeviceRoot::isDeviceItself()) {
        SH_LOG("Not run on the device root <{}>, as it acts on the running system: {}", DeviceRoot::get(), command);
        return;
    }
    systemExecute(command);
}

}  // namespace stowhaven
