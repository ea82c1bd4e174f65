#pragma once

#include "core/CydiaFile.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stowhaven {

// What a package screen offers on one package: its details, and the one action of its
// direction, installing it again for a restore, removing it from the device for a backup.
class PackageActions {
public:
    static constexpr const char* kInstallNow = "apt-get -y -m --force-yes install {}";
    static constexpr const char* kRemoveNow = "apt-get -y -m remove {}";

    // The labelled fields of its details, the description read from the package database.
    static std::vector<std::pair<std::string, std::string>> details(CydiaFile& package);
    // "Install now" in restore direction, "Remove now" in backup direction.
    static std::string actionTitle(bool backup);
    // The command line of the action; nothing for an identifier that can't stand in it.
    static std::optional<std::string> commandLine(const CydiaFile& package, bool backup);
    // Runs the action at once and asks the main flow to load the device again; false when
    // the package's identifier was refused and nothing ran.
    static bool run(const CydiaFile& package, bool backup);
};

}  // namespace stowhaven
