// A whole backup of the demo device to local storage, with every kind of data, the
// packages' files and encryption, read back with the device's own tools.

#include "archive/BuiltInCipherKey.h"
#include "backup/BackupOperation.h"
#include "support/OperationRun.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
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

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kPartSize = 1048576;

const std::vector<std::string> kKinds = {"PREFERENCES", "SPRINGBOARD", "CALENDAR", "CONTACTS", "HEALTH", "MAPS",
                                         "CHAT",        "NOTES",       "PHONE",    "SAFARI",   "PHOTOS", "VIDEOS"};

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::string line;
    for (const char c : text) {
        if (c != '\n') {
            line += c;
        } else {
            lines.push_back(line);
            line.clear();
        }
    }
    EXPECT_TRUE(line.empty()) << "the last line has no line end";
    return lines;
}

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
        for (auto* flag : {&gAutoScanPkgEnabled, &gAutoScanAppStoreAppsEnabled, &gAutoScanStockAppsEnabled,
                           &gAutoScanOtherOptionsEnabled, &gAutoScanPhotosEnabled, &gAutoScanVideosEnabled,
                           &gBackupDebsEnabled, &gEncryptBackupEnabled}) {
            *flag = true;
        }
        PhotoVideoManager::shared().setPhotoVideoAlbums({cameraRoll()}, true);
        LocalStorageHelper::settleStoragePath();
        engine_ = LocalStorageHelper::createLocalStorageHelper();
    }
    ~BackupToLocalStorageTest() override { PhotoVideoManager::shared().setPhotoVideoAlbums({}, false); }

    // Notes larger than two parts, of bytes that no cipher or compression shrinks much.
    void writeLargeNote() {
        std::string bytes(2 * kPartSize + 300000, '\0');
        std::mt19937 random(7);
        std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<char>(random()); });
        ASSERT_TRUE(FileManager::writeFile(device_.path("/var/mobile/Library/Notes/attachment.bin"), bytes));
    }

    // A file of the storage deciphered into a file of the test's own.
    std::string decipheredCopy(const std::string& enciphered, const std::string& name) {
        const std::string plain = work_.path().string() + "/" + name + ".plain";
        test::runCommand("openssl enc -d -a -salt -aes-256-cbc -in '" + enciphered + "' -k '" +
                         std::string(BuiltInCipherKey::kKeyHex) + "' -out '" + plain + "'");
        return plain;
    }

    // The parts of a kind joined and deciphered.
    std::string deciphered(const std::string& kind) {
        const std::string joined = work_.path().string() + "/" + kind + ".joined";
        test::runCommand("cd '" + sessionDirectory() + "/" + kind + "' && cat " + kind + "-??? > '" + joined + "'");
        return decipheredCopy(joined, kind);
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

TEST_F(BackupToLocalStorageTest, EveryKindOfDataIsStoredInPartsThatRestoreToTheDevicesFiles) {
    writeLargeNote();
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(std::int64_t{1}), "SplitSizeInMegaBytes");
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.loadPackages();
    ArchivableFolders::resetFolder();
    catalogue.setEncryptionKey("correct horse");

    runOperation(std::make_shared<BackupOperation>());

    ASSERT_TRUE(catalogue.hasSuccessfullySaveData());
    const auto session = catalogue.currentBackupSession();
    ASSERT_TRUE(session && session->isEncrypted());
    EXPECT_TRUE(
        FileManager::isRegularFile(localStoragePath() + "/" + StorageLayout::historyFileName(*session->sessionDate())));

    const std::string directory = sessionDirectory();
    for (const std::string& kind : kKinds) {
        SCOPED_TRACE(kind);
        const auto index = FileManager::contentsOfFile(directory + "/" + kind + ".idx");
        ASSERT_TRUE(index);
        const std::vector<std::string> parts = linesOf(*index);
        ASSERT_FALSE(parts.empty());
        EXPECT_EQ(FileManager::contentsOfDirectory(directory + "/" + kind), parts);
        for (std::size_t position = 0; position + 1 < parts.size(); ++position) {
            EXPECT_EQ(FileManager::sizeOfItem(directory + "/" + kind + "/" + parts[position]), kPartSize);
        }
        // Unpacked where the device keeps them, the files are the device's own.
        EXPECT_GT(expectDevicesFilesIn(deciphered(kind), kind), 0U);
    }
    EXPECT_EQ(linesOf(*FileManager::contentsOfFile(directory + "/NOTES.idx")),
              (std::vector<std::string>{"NOTES-000", "NOTES-001", "NOTES-002", "NOTES-003"}));
    EXPECT_TRUE(
        FileManager::isRegularFile(work_.path().string() + "/unpacked-NOTES/var/mobile/Library/Notes/attachment.bin"));
    EXPECT_TRUE(test::runCommand("tar -tf '" + deciphered("PREFERENCES") + "'")
                    .find("var/mobile/Library/Preferences/com.saurik.Cydia.plist") != std::string::npos);

    const auto debs = FileManager::contentsOfDirectory(directory + "/DEBS").value_or(std::vector<std::string>{});
    EXPECT_NE(std::find(debs.begin(), debs.end(), "mobilesubstrate_0.9.6011_iphoneos-arm.deb"), debs.end());
    EXPECT_TRUE(std::all_of(debs.begin(), debs.end(), [](const std::string& name) {
        return name.ends_with("_iphoneos-arm.deb") && name == textutil::lowered(name);
    }));

    const auto applications = FileManager::contentsOfDirectory(directory + "/APPLICATIONS_DATA");
    ASSERT_TRUE(applications);
    EXPECT_NE(std::find(applications->begin(), applications->end(), "Tidewatch.tbz"), applications->end());
    EXPECT_GT(
        expectDevicesFilesIn(decipheredCopy(directory + "/APPLICATIONS_DATA/Tidewatch.tbz", "Tidewatch"), "Tidewatch"),
        0U);
    ASSERT_TRUE(FileManager::isRegularFile(directory + "/Flex.tbz")) << "folders lie beside the applications";
    EXPECT_GT(expectDevicesFilesIn(decipheredCopy(directory + "/Flex.tbz", "Flex"), "Flex"), 0U);
}

}  // namespace
}  // namespace stowhaven
