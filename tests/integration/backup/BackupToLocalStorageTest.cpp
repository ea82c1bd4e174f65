// A whole backup of the demo device to local storage with the camera roll chosen, read back
// with the device's own tools. (The program's own round trip covers the other kinds.)

#include "backup/BackupOperation.h"
#include "support/OperationRun.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolders.h"
#include "items/PhotoVideoAlbum.h"
#include "items/PhotoVideoManager.h"
#include "platform/FileManager.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

// One album of the library, with its photos and videos chosen.
std::shared_ptr<PhotoVideoAlbum> cameraRoll() {
    auto album = std::make_shared<PhotoVideoAlbum>("Camera Roll");
    album->setPhotos({"IMG_0001.JPG"});
    album->setVideos({"IMG_0002.MOV"});
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
        for (auto* flag : {&gAutoScanPkgEnabled, &gAutoScanStockAppsEnabled, &gAutoScanPhotosEnabled,
                           &gAutoScanVideosEnabled}) {
            *flag = true;
        }
        PhotoVideoManager::shared().setPhotoVideoAlbums({cameraRoll()}, true);
        LocalStorageHelper::settleStoragePath();
        engine_ = LocalStorageHelper::createLocalStorageHelper();
    }
    ~BackupToLocalStorageTest() override { PhotoVideoManager::shared().setPhotoVideoAlbums({}, false); }

    // The parts of a kind joined.
    std::string joined(const std::string& kind) {
        const std::string joined = work_.path().string() + "/" + kind + ".joined";
        test::runCommand("cd '" + sessionDirectory() + "/" + kind + "' && cat " + kind + "-??? > '" + joined + "'");
        return joined;
    }

    // Unpacks an archive into a folder of its own and answers how many files it held; each
    // must be the device's file at the same place, byte for byte.
    std::size_t expectDevicesFilesIn(const std::string& archive, const std::string& name) {
        const std::string unpacked = work_.path().string() + "/unpacked-" + name;
        fs::create_directories(unpacked);
        test::runCommand("tar -xf '" + archive + "' -C '" + unpacked + "'");
        std::size_t count = 0;
        for (const auto& entry : fs::recursive_directory_iterator(unpacked)) {
            if (!entry.is_regular_file()) continue;
            ++count;
            const std::string devicePath = entry.path().string().substr(unpacked.size());
            EXPECT_EQ(FileManager::contentsOfFile(entry.path().string()),
                      FileManager::contentsOfFile(device_.path(devicePath)))
                << devicePath;
        }
        return count;
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

TEST_F(BackupToLocalStorageTest, TheChosenPhotosAndVideosAreStoredInPartsThatUnpackToTheDevicesFiles) {
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.loadPackages();
    ArchivableFolders::resetFolder();

    runOperation(std::make_shared<BackupOperation>());

    ASSERT_TRUE(catalogue.hasSuccessfullySaveData());
    for (const char* kind : {"PHOTOS", "VIDEOS"}) {
        SCOPED_TRACE(kind);
        ASSERT_TRUE(FileManager::isRegularFile(sessionDirectory() + "/" + kind + ".idx"));
        EXPECT_GT(expectDevicesFilesIn(joined(kind), kind), 0U);
    }
}

}  // namespace
}  // namespace stowhaven
