#include "restore/RestoreCommands.h"

#include "platform/DeviceRoot.h"
#include "platform/ShellQuote.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

std::string quoted(const std::string& value) { return "\"" + ShellQuote::inDoubleQuotes(value) + "\""; }

// The option's folder is "<root>/<target>": "//" for the root of the device itself.
std::string intoDevice(const std::string& target) {
    return quoted((DeviceRoot::isDeviceItself() ? "" : DeviceRoot::get()) + "/" + target);
}

}  // namespace

std::string RestoreCommands::joinParts(const std::string& folder, const std::string& name,
                                       const std::string& capitalized) {
    return fmt::format("cd {0}; cat {1}-??? >> {2}.tbz; rm -f {1}-??? {1}.idx", quoted(folder), name, capitalized);
}

std::string RestoreCommands::extract(const std::string& archive, const std::string& target,
                                     const std::optional<std::string>& list, int strip) {
    std::string command = fmt::format("tar -xf {} -C {}", quoted(archive), intoDevice(target));
    if (strip > 0) command += fmt::format(" --strip-components={}", strip);
    if (list) command += " --no-recursion --verbatim-files-from -T " + quoted(*list);
    return command;
}

std::string RestoreCommands::extractMember(const std::string& archive, const std::string& member,
                                           const std::string& target) {
    return fmt::format("tar -xf {} {} -C {}", quoted(archive), quoted(member), intoDevice(target));
}

std::string RestoreCommands::giveToMobile(const std::vector<std::string>& devicePaths) {
    std::string command = "chown -R mobile:mobile";
    for (const std::string& path : devicePaths) command += " " + quoted(DeviceRoot::path(path));
    return command;
}

}  // namespace stowhaven
