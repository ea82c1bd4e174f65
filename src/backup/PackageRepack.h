#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// Builds the .deb of an installed package again from the device, for a package that no
// repository serves any more: its record from the package database, its files copied into
// a tree of the temporary folder, packed by the device's dpkg-deb under the name the
// restore from .deb files looks for. A package the device no longer has whole is packed
// with what remains; one that can't be packed at all is refused, with the reason.
class PackageRepack {
public:
    enum class Result { Whole, Partial, Refused };

    struct Outcome {
        Result result = Result::Refused;
        std::string debPath;               // unless refused
        std::vector<std::string> missing;  // device paths left out, when partial
        std::string reason;                // when refused
    };

    // Repacks IDENTIFIER into FOLDER, building its tree in WORKFOLDER (removed after).
    static Outcome repack(const std::string& identifier, const std::string& folder, const std::string& workFolder);

    // dpkg-deb -b "TREE" "DEB" 1> "LOG" 2>&1: owners and modes as the tree has them.
    static std::string packCommand(const std::string& tree, const std::string& deb, const std::string& log);

    // The line of the capture's log and of the backup's report that tells the outcome.
    static std::string describe(const std::string& identifier, const Outcome& outcome);
};

}  // namespace stowhaven
