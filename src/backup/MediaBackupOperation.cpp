#include "backup/MediaBackupOperation.h"

#include "backup/BackupCommands.h"
#include "core/Supervisor.h"
#include "items/PhotoVideoManager.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"

#include <fmt/format.h>

namespace stowhaven {

MediaBackupOperation::MediaBackupOperation(std::string directoryName, StockDataSet set, std::string zipDir,
                                           bool photoOnly)
    : CategoryBackupOperation(std::move(directoryName), set, std::move(zipDir)), photoOnly_(photoOnly) {}

PhotosBackupOperation::PhotosBackupOperation()
    : MediaBackupOperation("PHOTOS", StockDataSet::Photos, "/var/mobile/Media/DCIM /var/mobile/Media/PhotoData", true) {
}

VideosBackupOperation::VideosBackupOperation()
    : MediaBackupOperation("VIDEOS", StockDataSet::Videos, "/var/mobile/Media/DCIM", false) {}

void MediaBackupOperation::archiveData() {
    if (stopsForCancel()) return;
    // The videos' prepared folder is left to the clean-up at the end of the backup.
    if (!photoOnly_) setCompletionBlock(nullptr);
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt,
                              Strings::localized(photoOnly_ ? "PREPARING_PHOTO_ALBUMS" : "PREPARING_VIDEO_ALBUMS"));
    PhotoVideoManager::shared().prepareBackupWithName(capitalizedName(), photoOnly_);
    supervisor.notifyProgress(std::nullopt,
                              fmt::format("{}: {}...", Strings::localized("ARCHIVING_DATA"), capitalizedName()));
    if (!zipDataWithCompression(false)) setOperationResult(1);
}

bool MediaBackupOperation::zipDataWithCompression(bool compressed) {
    if (stopsForCancel()) return false;
    SH_LOG("\tZipping data for <{}>...", zipDir());
    Supervisor& supervisor = Supervisor::shared();
    supervisor.systemExecute(BackupCommands::mediaArchive(archivePath(), compressed, photoOnly_));
    // The chosen albums' files, as prepared, are what a restore gives back to the library.
    const std::string albums = TemporaryDirectory::path() + "/" + capitalizedName();
    if (FileManager::fileExists(albums)) {
        supervisor.systemExecute(BackupCommands::updateArchive(archivePath(), {DeviceRoot::devicePathOf(albums)}));
    }
    return finishArchive();
}

}  // namespace stowhaven
