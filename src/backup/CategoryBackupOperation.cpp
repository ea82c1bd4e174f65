#include "backup/CategoryBackupOperation.h"

#include "core/BackupSession.h"

namespace stowhaven {

CategoryBackupOperation::CategoryBackupOperation(std::string directoryName, StockDataSet set, std::string zipDir)
    : kind_(std::move(directoryName)), set_(set), folder_(std::move(zipDir)) {}

void CategoryBackupOperation::main() {
    if (!backupSession() || !backupSession()->hasData(set_)) return;
    setDirectoryName(kind_);
    setZipDir(folder_);
    DataBackupOperation::main();
}

}  // namespace stowhaven
