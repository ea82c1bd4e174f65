#pragma once

#include "backup/ApplicationsDataOperation.h"

namespace stowhaven {

class Application;

// The chosen applications' data: a bzip2 tar of each one's Documents and Library folders,
// without caches and cookies, stored in the folder "APPLICATIONS_DATA" under the
// application's archive name. An application whose archive can't be made is passed over.
class AppStoreAppBackupOperation final : public ApplicationsDataOperation {
public:
    void main() override;

protected:
    void uploadDataToCloud() override;

private:
    bool zipApplication(Application& application, const std::string& target);
};

}  // namespace stowhaven
