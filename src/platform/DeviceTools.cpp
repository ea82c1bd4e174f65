#include "platform/DeviceTools.h"

#include "platform/DeviceRoot.h"
#include "platform/Log.h"
#include "platform/PrivateFolder.h"

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
// A path under which nothing can ever be.
constexpr const char* kNoFolder = "/dev/null";

// The tool folder lies on the search path of every command, which runs as root: it must be
// a folder no session, archive or other user can write to. Not under the temporary folder,
// where sessions and archives are unpacked, nor anywhere in /var/tmp, where any user may
// take a name first, but in /var/lib, root's own, in a private folder of its own.
std::string toolFolderPath() { return DeviceRoot::var() + "/lib/stowhaven/tools"; }

// Writes the shims and the apt configuration into the tool folder; nothing, when it can't be
// made the program's own. Done once per device root: the files depend on nothing else.
std::string prepareToolFolder(const std::string& root, const std::string& hostPath) {
    if (!PrivateFolder::make(DeviceRoot::var() + "/lib", {"stowhaven", "tools"})) return {};
    const std::string folder = toolFolderPath();
    std::error_code ignored;
    for (const Shim& shim : kShims) {
        if (!isOnPath(shim.name, "/usr/bin:" + hostPath)) writeFile(folder + "/" + shim.name, shim.text(), 0755);
    }
    if (root != "/") {
        writeFile(folder + "/apt.conf", DeviceTools::aptConfiguration(root), 0644);
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

std::vector<std::string> DeviceTools::environment() {
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

    std::vector<std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const bool withheld = std::any_of(std::begin(kWithheldVariables), std::end(kWithheldVariables),
                                          [&](std::string_view name) { return variable.starts_with(name); });
        const bool replaced = withheld || variable.starts_with("PATH=") || variable.starts_with("DPKG_ROOT=") ||
                              variable.starts_with("DPKG_ADMINDIR=") || variable.starts_with("APT_CONFIG=") ||
                              (root != "/" && variable.starts_with("HOME="));
        if (!replaced) variables.emplace_back(variable);
    }
    variables.push_back("PATH=" + hostPath + (toolFolder.empty() ? "" : ":" + toolFolder));
    if (root != "/") {
        // Without a tool folder of the program's own, apt-get and dpkg get a configuration
        // that can't exist and refuse to run, rather than work on the host's own database.
        const std::string configuration = toolFolder.empty() ? kNoFolder : toolFolder;
        variables.push_back("DPKG_ROOT=" + root);
        variables.push_back("DPKG_ADMINDIR=" + root + "/var/lib/dpkg");
        variables.push_back("APT_CONFIG=" + configuration + "/apt.conf");
        variables.push_back("HOME=" + configuration + "/home");
    }
    return variables;
}

}  // namespace stowhaven
