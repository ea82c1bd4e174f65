#include "flows/SelectionScreens.h"

#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"

namespace stowhaven {

namespace {

bool sessionHasApplications(const BackupSession& session) {
    const auto& applications = session.applications();
    return (applications && !applications->empty()) || session.countAppleStockApps() > 0;
}

bool sessionHasFiles(const BackupSession& session) {
    return !session.preferencesFileObjects().empty() || !session.springboardDataObjects().empty();
}

bool sessionHasFolders(const BackupSession& session) {
    const auto& folders = session.archivableFolders();
    return folders && !folders->empty();
}

}  // namespace

std::vector<FlowScreen> selectionScreens(bool backupMode) {
    const CydiaFileManager& catalogue = CydiaFileManager::shared();
    const auto session = catalogue.currentBackupSession();
    // In restore direction a screen needs the session to hold something of its own.
    const auto sessionHas = [&](bool (*holds)(const BackupSession&)) { return session && holds(*session); };
    const bool cloud = Supervisor::shared().isCloudStorage();

    std::vector<FlowScreen> screens;
    const bool appScans =
        gAutoScanAppStoreAppsEnabled || gAutoScanStockAppsEnabled || gAutoScanPhotosEnabled || gAutoScanVideosEnabled;
    if (cloud && appScans && (backupMode || sessionHas(sessionHasApplications))) {
        screens.push_back(FlowScreen::AppStoreSelection);
    }
    if (gAutoScanPkgEnabled && (backupMode || !catalogue.oldPackageSections().empty())) {
        screens.push_back(FlowScreen::PackageSelection);
    }
    if (gAutoScanPkgEnabled && (backupMode || sessionHas(sessionHasFiles))) {
        screens.push_back(FlowScreen::FilesSelection);
    }
    if (gAutoScanOtherOptionsEnabled && cloud && (backupMode || sessionHas(sessionHasFolders))) {
        screens.push_back(FlowScreen::OtherSelection);
    }
    return screens;
}

}  // namespace stowhaven
