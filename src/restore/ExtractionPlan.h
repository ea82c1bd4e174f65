#pragma once

#include "archive/TarListing.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// Where each member of an archive will land when tar unpacks it into the device, worked out
// before anything is unpacked. The members are placed in the archive's order on a picture
// of the device: the links that earlier members make and those already on the device are
// followed as the system follows them, so that no order of links can lead a member, or a
// later archive of the same restore, out of the places the archive owns.
class ExtractionPlan {
public:
    // Members unpack into the device folder TARGET, each without its first STRIP folders,
    // and may land only at or below the OWNED device places.
    ExtractionPlan(const std::vector<std::string>& owned, const std::string& target, int strip);

    struct Landing {
        // Where the member lands on the machine, links followed.
        std::string path;
        // The owner and group of the place it lands in, as the device has them.
        unsigned ownerId = 0;
        unsigned groupId = 0;
    };

    // Where MEMBER lands; nothing, with the reason, when it would land outside, write
    // through a link that leads out, lead out itself, or hard-link to what is not a file of
    // this archive. A member that tar drops whole when it strips folders lands nowhere and
    // is answered with an empty path.
    std::optional<Landing> place(const TarListing::Member& member, std::string& reason);

    // Once every member is placed: whether each link kept still leads within the places,
    // now that the whole archive stands; the first that doesn't, in `reason`.
    bool linksStayWithin(std::string& reason) const;

private:
    enum class Kind { Missing, Directory, File, Link };
    struct Entry {
        Kind kind = Kind::Missing;
        std::string linkTarget;
    };
    struct Place {
        std::string path;
        unsigned ownerId = 0;
        unsigned groupId = 0;
    };

    Entry entryAt(const std::string& path) const;
    std::optional<std::string> resolve(const std::string& path, bool followLast) const;
    // The machine path a name of the archive stands for, its folder's links followed.
    std::optional<std::string> landingOf(const std::string& name) const;
    const Place* placeHolding(const std::string& path) const;
    std::optional<std::string> stripped(const std::string& name) const;

    std::vector<Place> places_;
    std::string target_;
    int strip_;
    // What the members placed so far made, by machine path, over what the device has.
    std::map<std::string, Entry> made_;
    std::vector<std::string> links_;
};

}  // namespace stowhaven
