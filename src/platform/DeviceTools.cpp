#include "platform/DeviceTools.h"

#include "platform/DeviceRoot.h"
#include "platform/Log.h"
#include "platform/PrivateFolder.h"
#include "platform/Shell.h"
#include "platform/ShellQuote.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string_view>

extern char** environ;

namespace stowhaven {

std::string_view embeddedPlutilShim();

namespace {

struct Shim {
    const char* name;
    std::string_view (*text)();
};

constexpr Shim kShims[] = {{"plutil", embeddedPlutilShim}};

bool isOnPath(const std::string& tool, const std::string& searchPath) {
    std::string_view rest = searchPath;
    while (!rest.empty()) {
        const auto colon = rest.find(':');
        const std::string folder(rest.substr(0, colon));
        if (!folder.empty() && access((folder + "/" + tool).c_str(), X_OK) == 0) return true;
        if (colon == std::string_view::npos) break;
        rest.remove_prefix(colon + 1);
    }
    return false;
}

void writeFile(const std::string& path, std::string_view text, mode_t mode) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    if (chmod(path.c_str(), mode) != 0) SH_LOG("Couldn't prepare <{}>", path);
}

// The variables a device tool never sees: the user's encryption key is the program's alone.
constexpr std::string_view kWithheldVariables[] = {"STOWHAVEN_KEY="};

// The tool folder lies on the search path of every command, which runs as root: it must be
// a folder no session, archive or other user can write to. Not under the temporary folder,
// where sessions and archives are unpacked, nor anywhere in /var/tmp, where any user may
// take a name first, but in /var/lib, root's own, in a private folder of its own.
std::string toolFolderPath() { return DeviceRoot::var() + "/lib/stowhaven/tools"; }

// apt's settings have no way to write a double quote or a line break in a value.
bool aptCanName(const std::string& root) { return root.find_first_of("\"\n") == std::string::npos; }

// Writes the shims and the apt configuration into the tool folder; nothing, when it can't be
// made the program's own. Done once per device root: the files depend on nothing else.
std::string prepareToolFolder(const std::string& root, const std::string& hostPath) {
    if (!PrivateFolder::make(DeviceRoot::var() + "/lib", {"stowhaven", "tools"})) return {};
    const std::string folder = toolFolderPath();
    std::error_code ignored;
    for (const Shim& shim : kShims) {
        // On the device a tool of its own comes first; on another root the shim does.
        const bool deviceHasTool =
            root == "/" && isOnPath(shim.name, std::string(Shell::kDeviceToolFolder) + ":" + hostPath);
        if (!deviceHasTool) writeFile(folder + "/" + shim.name, shim.text(), 0755);
    }
    if (root != "/") {
        if (aptCanName(root)) {
            writeFile(folder + "/apt.conf", DeviceTools::aptConfiguration(root), 0644);
        } else {
            // A block without a name: apt-get refuses the file and runs on nothing.
            SH_LOG("apt's settings can't name the device root <{}>: apt-get won't run on it", root);
            writeFile(folder + "/apt.conf", "// No folder apt can name.\n{\n", 0644);
        }
        // dpkg's log is no part of its database: it follows the configuration in $HOME.
        std::filesystem::create_directories(folder + "/home", ignored);
        writeFile(folder + "/home/.dpkg.cfg", "log " + root + "/var/log/dpkg.log\n", 0644);
    }
    return folder;
}

}  // namespace

std::string DeviceTools::aptConfiguration(const std::string& root) {
    return fmt::format(
        "Dir \"{0}/\";\n"
        "Dir::State::status \"{0}/var/lib/dpkg/status\";\n"
        "APT::Architecture \"iphoneos-arm\";\n"
        "APT::Architectures {{ \"iphoneos-arm\"; }};\n"
        "APT::Sandbox::User \"root\";\n"
        "DPkg::Options {{ \"--root={0}\"; \"--admindir={0}/var/lib/dpkg\"; }};\n",
        root);
}

std::optional<DeviceTools::Setting> DeviceTools::forCurrentRoot() {
    static std::mutex mutex;
    static std::string preparedRoot;
    static std::string toolFolder;

    const std::string root = DeviceRoot::get();
    const char* pathVariable = std::getenv("PATH");
    const std::string hostPath = pathVariable ? pathVariable : "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin";
    {
        std::lock_guard lock(mutex);
        if (preparedRoot != root || !PrivateFolder::isPrivate(toolFolder)) {
            toolFolder = prepareToolFolder(root, hostPath);
            preparedRoot = root;
        }
    }
    const bool deviceItself = root == "/";
    if (!deviceItself && toolFolder.empty()) {
        SH_LOG("No tool folder of the program's own on the device root <{}>: its commands don't run", root);
        return std::nullopt;
    }

    Setting setting;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const bool withheld = std::any_of(std::begin(kWithheldVariables), std::end(kWithheldVariables),
                                          [&](std::string_view name) { return variable.starts_with(name); });
        const bool replaced = withheld || variable.starts_with("PATH=") || variable.starts_with("DPKG_ROOT=") ||
                              variable.starts_with("DPKG_ADMINDIR=") || variable.starts_with("APT_CONFIG=") ||
                              (!deviceItself && variable.starts_with("HOME="));
        if (!replaced) setting.environment.emplace_back(variable);
    }
    if (deviceItself) {
        setting.environment.push_back("PATH=" + hostPath + (toolFolder.empty() ? "" : ":" + toolFolder));
        setting.searchPathFront = Shell::kDeviceToolFolder;
        return setting;
    }
    setting.environment.push_back("PATH=" + hostPath);
    setting.environment.push_back("DPKG_ROOT=" + root);
    setting.environment.push_back("DPKG_ADMINDIR=" + root + "/var/lib/dpkg");
    setting.environment.push_back("APT_CONFIG=" + toolFolder + "/apt.conf");
    setting.environment.push_back("HOME=" + toolFolder + "/home");
    setting.searchPathFront = ShellQuote::path(toolFolder) + ":" + Shell::kDeviceToolFolder;
    return setting;
}

}  // namespace stowhaven
