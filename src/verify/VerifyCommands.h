#pragma once

#include <string>

namespace stowhaven {

// The command lines of a verification, each filled into its one template here; paths stand
// between double quotes, escaped. Each leaves its result in files: the system learns
// nothing from exit statuses.
class VerifyCommands {
public:
    // Appends PART to JOINED.
    static std::string appendPart(const std::string& part, const std::string& joined);
    // Writes MARK only when DEB is a whole package archive: dpkg-deb reads its control
    // information, then unpacks its whole file tree into nothing, which a file cut short
    // anywhere fails.
    static std::string checkDeb(const std::string& deb, const std::string& mark);
    // Writes MARK, whenever a command can run at all.
    static std::string markRun(const std::string& mark);
};

}  // namespace stowhaven
