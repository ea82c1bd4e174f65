#include "platform/DeviceTools.h"

#include "platform/DeviceRoot.h"
#include "platform/Log.h"
#include "platform/TemporaryDirectory.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

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

// Writes the shims and the apt configuration into the program's own folder. Done once per
// device root: the files depend on nothing else.
std::string prepareToolFolder(const std::string& root, const std::string& hostPath) {
    const std::string folder = TemporaryDirectory::path() + "/tools";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
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
        if (preparedRoot != root || !std::filesystem::exists(toolFolder)) {
            toolFolder = prepareToolFolder(root, hostPath);
            preparedRoot = root;
        }
    }

    std::vector<std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const bool replaced = variable.starts_with("PATH=") || variable.starts_with("DPKG_ROOT=") ||
                              variable.starts_with("DPKG_ADMINDIR=") || variable.starts_with("APT_CONFIG=") ||
                              (root != "/" && variable.starts_with("HOME="));
        if (!replaced) variables.emplace_back(variable);
    }
    variables.push_back("PATH=" + hostPath + ":" + toolFolder);
    if (root != "/") {
        variables.push_back("DPKG_ROOT=" + root);
        variables.push_back("DPKG_ADMINDIR=" + root + "/var/lib/dpkg");
        variables.push_back("APT_CONFIG=" + toolFolder + "/apt.conf");
        variables.push_back("HOME=" + toolFolder + "/home");
    }
    return variables;
}

}  // namespace stowhaven
