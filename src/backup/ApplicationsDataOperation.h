#pragma once

#include "backup/DataBackupOperation.h"

namespace stowhaven {

// The kind "APPLICATIONS_DATA": archives of their own, one per application or tweak place,
// each compressed and sent whole, with no index and no parts.
class ApplicationsDataOperation : public DataBackupOperation {
public:
    static constexpr const char* kDirectory = "APPLICATIONS_DATA";

protected:
    ApplicationsDataOperation();

    // Nothing to archive ahead and no index: the steps go straight to the upload.
    void archiveData() override {}
    void uploadDataIndexToCloud() override {}
};

// Makes the session's folder "APPLICATIONS_DATA" once, ahead of the operations that fill it.
class CreateApplicationDataFolderOperation final : public ApplicationsDataOperation {
public:
    void main() override;
};

}  // namespace stowhaven
