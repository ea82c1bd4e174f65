#pragma once

#include "backup/ApplicationsDataOperation.h"

namespace stowhaven {

class ArchivableFolder;

// The chosen tweak places: one bzip2 archive each, named after the place's type and stored
// directly in the session directory. A place whose items are chosen one by one is packed
// as a tar of those items, itself inside the compressed archive.
class ArchivableFolderBackupOperation final : public ApplicationsDataOperation {
public:
    void main() override;

protected:
    void uploadDataToCloud() override;

private:
    // The archive of a place without selectable content; false when none was made.
    bool zipArchivableFolder(const ArchivableFolder& folder, const std::string& target);
    // The archive of the chosen items of a place; nothing when no item is chosen.
    std::optional<std::string> zipSelectedContent(const ArchivableFolder& folder);
};

}  // namespace stowhaven
