#include "backup/ApplicationsDataOperation.h"

namespace stowhaven {

ApplicationsDataOperation::ApplicationsDataOperation() { setDirectoryName(kDirectory); }

void CreateApplicationDataFolderOperation::main() {
    nameOperation();
    setCompletionBlock(nullptr);
    setOperationResult(0);
    if (sessionDate() && engine()) createDataDirectory();
}

}  // namespace stowhaven
