#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// Who owns a file and what its permission bits are, with the accounts by name, as a
// session records them and a restore sets them again.
struct FileOwnership {
    unsigned permissions = 0;  // the nine permission bits and the three special ones
    std::string ownerAccountName;
    // Absent when the group has no name on this system.
    std::optional<std::string> groupOwnerAccountName;

    // Nothing, with a description in `error`, when the item can't be read or its owner
    // has no name here. A final symbolic link is not followed.
    static std::optional<FileOwnership> read(const std::string& path, std::string* error = nullptr);

    // Sets the owner, the group when given, and the permission bits; false, with a
    // description in `error`, when an account is unknown or a change fails.
    bool applyTo(const std::string& path, std::string* error = nullptr) const;
};

}  // namespace stowhaven
