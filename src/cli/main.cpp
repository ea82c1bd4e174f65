#include "cli/PackagesCommand.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <iostream>

using namespace stowhaven;

namespace {

// The program does all of its device work as root, as it does on the device, where it is
// installed set-user-id root.
bool becomeRoot() { return setuid(0) == 0 && setgid(0) == 0; }

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Backs up and restores what the owner has made of the device."};
    app.set_version_flag("--version", std::string("stowhaven ") + STOWHAVEN_VERSION);
    app.require_subcommand(1);

    std::string root = "/";
    bool verbose = false;
    app.add_option("--root", root, "The device root: a folder laid out like the device (\"/\" on the device)")
        ->envname("STOWHAVEN_ROOT");
    app.add_flag("--verbose", verbose, "Also write the log to the terminal");

    bool asJson = false;
    CLI::App* packages = app.add_subcommand("packages", "List the packages installed on the device");
    packages->add_flag("--json", asJson, "As a JSON list");

    CLI11_PARSE(app, argc, argv);

    if (!becomeRoot()) {
        std::cerr << "stowhaven: must run as root (it installs packages and restores system files)\n";
        return 255;
    }
    Log::setVerbose(verbose);
    bool isDirectory = false;
    if (!FileManager::fileExists(root, isDirectory) || !isDirectory) {
        std::cerr << "stowhaven: the device root <" << root << "> is not a folder\n";
        return 2;
    }
    if (!DeviceRoot::set(root)) {
        std::cerr << "stowhaven: the device root <" << root << "> may only hold letters, digits and / . _ - +\n";
        return 2;
    }
    return PackagesCommand::run(asJson, std::cout, std::cerr);
}
