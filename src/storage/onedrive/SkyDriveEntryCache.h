#pragma once

#include "storage/onedrive/SkyDriveReplies.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// Entries of the account as listings gave them, each with the folder it lies in, so that a
// name is looked up where it belongs: a session's "NOTES" is never another session's.
// Every walk and change holds the cache's lock.
class SkyDriveEntryCache {
public:
    // The entries of one folder's listing, in place of those known of that folder before.
    void replaceChildren(const std::string& folderId, std::vector<SkyDriveEntry> entries);
    // An entry made or renamed, in place of the one of the same id.
    void add(SkyDriveEntry entry);
    // An entry, with the entries known of what it held.
    void remove(const std::string& id);
    void clear();

    // The folder of exactly that name in the folder.
    std::optional<SkyDriveEntry> folder(const std::string& name, const std::string& parentId) const;
    // The file of that name, or of that name with ".pdf" added, in any case, in the folder;
    // the last listed wins.
    std::optional<SkyDriveEntry> file(const std::string& name, const std::string& parentId) const;
    // Any item of that name in any case: a folder can't take a name that is taken.
    std::optional<SkyDriveEntry> named(const std::string& name, const std::string& parentId) const;

private:
    mutable std::mutex mutex_;
    std::vector<SkyDriveEntry> entries_;
};

}  // namespace stowhaven
