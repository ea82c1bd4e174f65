#include "backup/AppStoreAppBackupOperation.h"

#include "backup/BackupCommands.h"
#include "core/BackupSession.h"
#include "core/FileSizes.h"
#include "core/Supervisor.h"
#include "items/Application.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "storage/StorageHelperProtocol.h"

#include <fmt/format.h>

namespace stowhaven {

void AppStoreAppBackupOperation::main() {
    // The session holds only the chosen applications.
    if (backupSession() && backupSession()->applications() && !backupSession()->applications()->empty()) {
        DataBackupOperation::main();
    }
}

void AppStoreAppBackupOperation::uploadDataToCloud() {
    Supervisor& supervisor = Supervisor::shared();
    for (const auto& application : *backupSession()->applications()) {
        if (stopsForCancel()) return;
        supervisor.logMemoryUsage();
        SH_LOG("Processing data for <{}>...", application->displayName());
        const std::string path = temporaryPath(application->archiveName());
        if (!zipApplication(*application, path)) {
            SH_LOG("Skipping <{}> couldn't create archive @ <{}>", application->displayName(), path);
            continue;
        }
        supervisor.notifyProgress(
            0.0, fmt::format("{}: {}", application->displayName(), Strings::localized("UPLOADING_ARCHIVED_DATA")));
        if (stopsForCancel()) return;
        const std::uint64_t size = FileManager::sizeOfItem(path);
        if (size == 0) {
            SH_LOG("<{}> is empty!", path);
            continue;
        }
        SH_LOG("\tUploading data <[{:.3f}Mb]> for <{}>...", static_cast<double>(size) / FileSizes::kBytesPerMegabyte,
               application->displayName());
        engine()->uploadFile(path, *sessionDate(), std::string(kDirectory));
    }
}

bool AppStoreAppBackupOperation::zipApplication(Application& application, const std::string& target) {
    if (stopsForCancel()) return false;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(
        std::nullopt, fmt::format("{}: {}...", application.displayName(), Strings::localized("ARCHIVING_DATA")));
    SH_LOG("\tZipping data for <{}> {{{:.3f}Mb}}...", application.displayName(), application.totalSize());
    // Both data folders go in, whatever the application's choice of them says.
    supervisor.systemExecute(BackupCommands::applicationArchive(target, application.documentPath().value_or(""),
                                                                application.libraryPath().value_or("")));
    if (!FileManager::isRegularFile(target)) {
        fail("tar", "archive", application.displayName());
        return false;
    }
    return sealArchive(application.displayName(), target);
}

}  // namespace stowhaven
