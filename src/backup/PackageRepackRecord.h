#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// What the device's package database says of one installed package, enough to build its
// .deb again: the control fields of its status entry less those dpkg adds on install, the
// files of its list, its conffiles and the maintainer scripts of the info folder. Every
// file is read through ContainedPath: a database that names a place outside the device
// root is refused, not followed.
struct PackageRepackRecord {
    struct Script {
        std::string name;      // "postinst"
        std::string hostPath;  // where it lies in the info folder
    };

    std::string identifier;
    std::string version;
    std::string architecture;
    // The control file to pack, one field a line, continuation lines kept.
    std::string control;
    // The device paths of the list, in its order; "/." left out.
    std::vector<std::string> files;
    std::vector<std::string> conffiles;
    std::vector<Script> scripts;

    // The record of the installed package IDENTIFIER; nothing, with the reason, when the
    // database doesn't hold it whole or names a place it may not.
    static std::optional<PackageRepackRecord> read(const std::string& identifier, std::string* reason);
};

}  // namespace stowhaven
