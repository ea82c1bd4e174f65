#pragma once

#include "restore/ExtractionPlan.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// What of an archive may be unpacked into the device. An archive comes from storage or
// from a file handed in, and may be crafted to write anywhere: a member is allowed only
// when it lands at or below the places its kind owns, writes through no link that leads
// elsewhere, is no link that leads elsewhere once the whole archive stands, and is no hard
// link to anything but a file of the archive itself.
class ArchiveMembers {
public:
    // Where an archive unpacks: into the device folder `target`, each member without its
    // first `strip` folders, landing only at or below the `owned` device places, which come
    // from the device's own tables, never from a session.
    struct Placement {
        std::vector<std::string> owned;
        std::string target = "/";
        int strip = 0;
    };

    // Nothing, with a log line, for an archive that can't be listed as tar reads it, or
    // whose links would lead out once it stands whole.
    static std::optional<ArchiveMembers> of(const std::string& archive, const Placement& placement);

    // The names that may be unpacked, each once, in the archive's order. A name stored
    // twice is allowed only when every member of that name is.
    const std::vector<std::string>& allowed() const { return allowed_; }

    // Gives the unpacked members NAMES the owner of the place each landed in, whatever
    // owner the archive stored.
    void giveToOwners(const std::vector<std::string>& names) const;

private:
    std::vector<std::string> allowed_;
    std::map<std::string, std::vector<ExtractionPlan::Landing>> landings_;
};

}  // namespace stowhaven
