#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// What of an archive may be unpacked into the device: the members named under the places
// a kind owns, with no ".." in their names, and no link that leads elsewhere. An archive
// comes from storage or from a file handed in, and may be crafted to write anywhere.
class ArchiveMembers {
public:
    // Sorts the members of ARCHIVE (a plain or bzip2 tar) by the device paths OWNED (a
    // member may be one of them or lie below one); nothing, with a log line, for an
    // archive that can't be read.
    static std::optional<ArchiveMembers> of(const std::string& archive, const std::vector<std::string>& owned);

    // Whether a member named NAME (as tar stores it, without the leading "/") lands at or
    // below one of the OWNED device paths; links are judged by where they lead.
    static bool landsWithin(const std::string& name, const std::vector<std::string>& owned);

    const std::vector<std::string>& allowed() const { return allowed_; }
    const std::vector<std::string>& refused() const { return refused_; }
    bool isAllowed(const std::string& name) const;

private:
    std::vector<std::string> allowed_;
    std::vector<std::string> refused_;
};

}  // namespace stowhaven
