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
    // Unpacks the members of ARCHIVE that the LIST file names, one a line, as they stand,
    // into the device folder TARGET; with STRIP, each member without its first STRIP
    // folders. The members become root's, with no set-user or set-group bit, whatever the
    // archive stored: an archive from outside decides no owner and no privilege.
    static std::string extract(const std::string& archive, const std::string& target, const std::string& list,
                               int strip = 0);
    // Gives device paths back to the user "mobile", in one command.
    static std::string giveToMobile(const std::vector<std::string>& devicePaths);
};

}  // namespace stowhaven
