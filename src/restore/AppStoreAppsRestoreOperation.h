#pragma once

#include "restore/DataRestoreOperation.h"

namespace stowhaven {

class Application;

// The chosen applications' data, one archive each from the folder "APPLICATIONS_DATA",
// unpacked into the application's data container on this device: the one the device has
// now for that bundle, else the one the session recorded. A fetch that fails moves on to
// the next application.
class AppStoreAppsRestoreOperation final : public DataRestoreOperation {
public:
    void main() override;

private:
    void restoreApplication(const Application& application);
    // Unpacks the archive, whose members lie below the RECORDED container, into TARGET.
    // False when the archive couldn't be trusted and nothing was unpacked.
    bool unzipApplication(const std::string& archive, const std::string& recorded, const std::string& target);
};

}  // namespace stowhaven
