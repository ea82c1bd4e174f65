#pragma once

#include "backup/PackageRepackRecord.h"

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The folder dpkg-deb packs: the package's files copied from the device as the list names
// them, links as links, with their owners and modes, and DEBIAN/ with the control file,
// the conffiles and the maintainer scripts. What the device no longer has is left out and
// named; what can't be read from inside the device root refuses the whole package.
class PackageRepackTree {
public:
    struct Outcome {
        // The reason the package can't be packed at all.
        std::optional<std::string> refusal;
        // The device paths of the list and the conffiles that are gone.
        std::vector<std::string> missing;
    };

    // Builds the tree of RECORD in FOLDER, which must not exist yet.
    static Outcome build(const PackageRepackRecord& record, const std::string& folder);
};

}  // namespace stowhaven
