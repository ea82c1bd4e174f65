#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The command lines of the restore pipeline, each filled into its one template here.
// Extraction goes into the device root ("/" on the device itself), where the archives'
// members, named as device paths, belong. Values stand between double quotes, escaped.
class RestoreCommands {
public:
    static constexpr const char* kAptGetUpdate = "apt-get update";

    // Installs a package (an identifier that passed ShellQuote::packageIdentifier, standing
    // unquoted) with apt-get, its output into LOG; FORCED adds "--force-yes".
    static std::string aptGetInstall(const std::string& identifier, const std::string& log, bool forced);
    // Installs a .deb file with dpkg, its output into LOG.
    static std::string dpkgInstall(const std::string& deb, const std::string& log);
    // Joins the parts NAME-000, NAME-001... in FOLDER onto Name.tbz and removes the parts
    // and the index. NAME is a kind's name, never a value from outside.
    static std::string joinParts(const std::string& folder, const std::string& name, const std::string& capitalized);
    // Unpacks ARCHIVE into the device folder TARGET; with a LIST file, only the members it
    // names, one a line; with STRIP, each member without its first STRIP folders.
    static std::string extract(const std::string& archive, const std::string& target,
                               const std::optional<std::string>& list = std::nullopt, int strip = 0);
    // Unpacks one member, named as tar stores it, into the device folder TARGET.
    static std::string extractMember(const std::string& archive, const std::string& member, const std::string& target);
    // Gives device paths back to the user "mobile", in one command.
    static std::string giveToMobile(const std::vector<std::string>& devicePaths);
};

}  // namespace stowhaven
