#include "restore/RestoreCommands.h"

#include "platform/DeviceRoot.h"
#include "platform/ShellQuote.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

// The option's folder is "<root>/<target>": "//" for the root of the device itself.
std::string intoDevice(const std::string& target) {
    return ShellQuote::quoted((DeviceRoot::isDeviceItself() ? "" : DeviceRoot::get()) + "/" + target);
}

}  // namespace

std::string RestoreCommands::aptGetInstall(const std::string& identifier, const std::string& log, bool forced) {
    return fmt::format("apt-get -y -m {}install {} 1>{} 2>&1", forced ? "--force-yes " : "", identifier,
                       ShellQuote::quoted(log));
}

std::string RestoreCommands::dpkgInstall(const std::string& deb, const std::string& log) {
    return fmt::format("dpkg -i {} 1>{} 2>&1", ShellQuote::quoted(deb), ShellQuote::quoted(log));
}

std::string RestoreCommands::joinParts(const std::string& folder, const std::string& name,
                                       const std::string& capitalized) {
    return fmt::format("cd {0}; cat {1}-??? >> {2}.tbz; rm -f {1}-??? {1}.idx", ShellQuote::quoted(folder), name,
                       capitalized);
}

std::string RestoreCommands::extract(const std::string& archive, const std::string& target, const std::string& list,
                                     int strip) {
    std::string command = fmt::format("tar -xf {} -C {} --no-same-owner --no-same-permissions",
                                      ShellQuote::quoted(archive), intoDevice(target));
    if (strip > 0) command += fmt::format(" --strip-components={}", strip);
    return command + " --no-recursion --no-wildcards --verbatim-files-from -T " + ShellQuote::quoted(list);
}

std::string RestoreCommands::giveToMobile(const std::vector<std::string>& devicePaths) {
    std::string command = "chown -R mobile:mobile";
    for (const std::string& path : devicePaths) command += " " + ShellQuote::quoted(DeviceRoot::path(path));
    return command;
}

}  // namespace stowhaven
