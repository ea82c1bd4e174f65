#pragma once

#include <string>
#include <vector>

namespace stowhaven {

class BackupSession;

// A kind of indexed data as a restore sees it: its name on the storage, whether a session
// holds it, and the device places its archive may write to.
struct DataCategory {
    const char* name;
    bool (*isHeldBy)(const BackupSession& session);
    std::vector<std::string> ownedPaths;
};

// The twelve kinds, in the order a restore takes them.
const std::vector<DataCategory>& dataCategories();
// The kind of that name; nullptr for another name.
const DataCategory* dataCategoryNamed(const std::string& name);

}  // namespace stowhaven
