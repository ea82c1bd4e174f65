#pragma once

#include "restore/DataRestoreOperation.h"

namespace stowhaven {

class ArchivableFolder;

// The chosen tweak places, one archive each from the session directory, unpacked in two
// steps: the compressed archive first (which for a place with selectable content puts back
// the inner tar where the backup made it), then the inner tar, of which only the chosen
// items. Each place goes back to the user "mobile".
class ArchivableFolderRestoreOperation final : public DataRestoreOperation {
public:
    void main() override;

private:
    void restoreArchivableFolder(const ArchivableFolder& folder);
    void extractCompressedArchive(const std::string& archive, const ArchivableFolder& folder);
};

}  // namespace stowhaven
