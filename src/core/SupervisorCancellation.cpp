#include "core/Supervisor.h"

#include "platform/Platform.h"
#include "platform/dispatch/NotificationCenter.h"

namespace stowhaven {

void Supervisor::handleProgressCanceled() {
    fCanceled_ = true;
    // The job's tools go first, so that none writes into the temporary folder once swept.
    Platform::current().shell().stopRunningCommands();
    removeTemporaryFiles();
    removeTemporaryFolders();
    NotificationCenter::defaultCenter().post("OPERATION_CANCELED");
}

}  // namespace stowhaven
