// A whole backup of the demo device to local storage with the camera roll chosen, read back
// with tar. (The program's own round trip covers the other kinds.)

#include "backup/BackupOperation.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolders.h"
#include "items/PhotoVideoAlbum.h"
#include "items/PhotoVideoManager.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/OperationRun.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"
#include "support/TestFolder.h"
#include "support/TextLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// One album of the library, with its photos and videos chosen.
std::shared_ptr<PhotoVideoAlbum> cameraRoll() {
    auto album = std::make_shared<PhotoVideoAlbum>("Camera Roll");
    album->setPhotos({"IMG_0001.JPG"});
    album->setVideos({"IMG_0005.MOV"});
    album->setPhotoSelected(true);
    album->setVideoSelected(true);
    album->setPhotoSize(0.1);
    album->setVideoSize(0.1);
    album->setAllAccounted(true);
    return album;
}

class BackupToLocalStorageTest : public ::testing::Test {
protected:
    BackupToLocalStorageTest() : scope_(device_.root()) {
        // The Supervisor's start-up commands are for a device: recorded, not run here.
        scope_.supervisor();
        scope_.services.shell.runsCommands = true;
        for (auto* flag :
             {&gAutoScanPkgEnabled, &gAutoScanStockAppsEnabled, &gAutoScanPhotosEnabled, &gAutoScanVideosEnabled}) {
            *flag = true;
        }
        PhotoVideoManager::shared().setPhotoVideoAlbums({cameraRoll()}, true);
        LocalStorageHelper::settleStoragePath();
        engine_ = LocalStorageHelper::createLocalStorageHelper();
    }
    ~BackupToLocalStorageTest() override { PhotoVideoManager::shared().setPhotoVideoAlbums({}, false); }

    // The members of a kind's archive, its parts joined, as tar lists them.
    std::vector<std::string> membersOf(const std::string& kind) {
        const std::string joined = work_.path().string() + "/" + kind + ".joined";
        test::runCommand("cd " + ShellQuote::path(sessionDirectory() + "/" + kind) + " && cat " + kind + "-??? > " +
                         ShellQuote::path(joined));
        return test::linesOf(test::runCommand("tar -tf " + ShellQuote::path(joined)));
    }

    std::string sessionDirectory() const {
        const auto session = CydiaFileManager::shared().currentBackupSession();
        return localStoragePath() + "/" + StorageLayout::stamp(*session->sessionDate());
    }

    test::SandboxDevice device_{"demo"};
    test::SupervisorScope scope_;
    std::shared_ptr<LocalStorageHelper> engine_;
    test::TestFolder work_;
};

// The camera roll's photos go with the library's own data, its videos alone, and no cache.
TEST_F(BackupToLocalStorageTest, TheChosenPhotosAndVideosEachTakeTheirOwnFilesOfTheCameraRoll) {
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.loadPackages();
    ArchivableFolders::resetFolder();

    runOperation(std::make_shared<BackupOperation>());

    ASSERT_TRUE(catalogue.hasSuccessfullySaveData());
    const auto photos = membersOf("PHOTOS");
    const auto videos = membersOf("VIDEOS");
    const auto holds = [](const std::vector<std::string>& members, const std::string& member) {
        return std::find(members.begin(), members.end(), member) != members.end();
    };
    EXPECT_TRUE(holds(photos, "var/mobile/Media/DCIM/100APPLE/IMG_0001.JPG"));
    EXPECT_TRUE(holds(photos, "var/mobile/Media/PhotoData/Photos.sqlite"));
    EXPECT_TRUE(holds(videos, "var/mobile/Media/DCIM/100APPLE/IMG_0005.MOV"));
    for (const std::string& member : photos) {
        EXPECT_FALSE(member.ends_with(".MOV") || member.find("/Caches/") != std::string::npos) << member;
    }
    for (const std::string& member : videos) EXPECT_FALSE(member.ends_with(".JPG")) << member;
}

}  // namespace
}  // namespace stowhaven
