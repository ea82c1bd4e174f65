#pragma once

#include "items/ArchivableFolder.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace stowhaven {

// The archivable folders of this device: one for each row of the table whose condition the
// device meets, looked at when the list is made, sorted by name.
class ArchivableFolders {
public:
    using Folders = std::vector<std::shared_ptr<ArchivableFolder>>;

    // Makes the list anew; it stays empty while the scan of other options is off or the
    // storage is the address book, which holds no files.
    static void resetFolder();
    static Folders folders();
    // The first folder of that type; none without one.
    static std::shared_ptr<ArchivableFolder> folderOfType(std::int32_t type);
    // A folder, or an item of one, is selected.
    static bool hasAnythingSelected();
};

}  // namespace stowhaven
