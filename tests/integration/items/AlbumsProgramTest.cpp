// The photo library's albums through the program: listed, backed up and given back to the
// library of a device that has none.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "platform/SqliteDatabase.h"
#include "support/DeviceAlbums.h"
#include "support/SandboxDevice.h"
#include "support/TestFolder.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";
constexpr const char* kCameraRollFolder = "/var/mobile/Media/DCIM/100APPLE/";

// Photos and videos are data of the stock applications.
bool turnOnAlbums(const test::SandboxDevice& device) {
    return device.turnOn({"AutoScanStockAppsEnabled", "AutoScanPhotosEnabled", "AutoScanVideosEnabled"});
}

// The storage folder of FROM carried to a device to restore onto, which lists the sessions
// through its package scan.
bool carryStorage(const test::SandboxDevice& from, const test::SandboxDevice& to) {
    fs::copy(from.path(kStorageFolder), to.path(kStorageFolder), fs::copy_options::recursive);
    return turnOnAlbums(to) && to.turnOn({"AutoScanPkgEnabled"});
}

using test::albumsOf;

// The album folders the session's archives of photos and videos hold, unpacked into FOLDER.
fs::path unpackAlbums(const test::SandboxDevice& device, const test::TestFolder& folder) {
    const std::string storage = ShellQuote::path(device.path(kStorageFolder));
    const std::string into = ShellQuote::path(folder.path().string());
    for (const char* kind : {"PHOTOS", "VIDEOS"}) {
        test::runCommand(
            fmt::format("cat {0}/*/{1}/{1}-* | tar -x -C {2} --wildcards 'var/tmp/stowhaven/*'", storage, kind, into));
    }
    return folder.path() / "var/tmp/stowhaven";
}

void runSql(const test::SandboxDevice& device, const std::string& sql) {
    auto database =
        SqliteDatabase::open(device.path("/var/mobile/Media/PhotoData/Photos.sqlite"), SQLITE_OPEN_READWRITE);
    ASSERT_TRUE(database && database->exec(sql));
}

// One backup of the demo device's albums, and its restore onto a device with an empty library.
TEST(AlbumsProgramTest, AlbumsGoIntoTheBackupByteForByteAndComeBackIntoAnEmptyLibrary) {
    const test::SandboxDevice original("demo");
    ASSERT_TRUE(turnOnAlbums(original));
    auto albums = albumsOf(original);
    ASSERT_EQ(albums.size(), 4u) << "the empty album has nothing to take";
    EXPECT_FALSE(albums["Blank Scans"]["photoSelected"]) << "its photos are all of size 0";
    EXPECT_EQ(albums["Blank Scans"]["photos"].size(), 2u);
    EXPECT_EQ(albums["Holidays"]["photos"], nlohmann::json({"IMG_0001.JPG", "IMG_0002.JPG"}));
    EXPECT_EQ(albums["Holidays"]["videos"], nlohmann::json({"IMG_0005.MOV"}));
    EXPECT_EQ(albums["Camera Roll"]["videos"].size(), 2u);

    const auto backup = original.run("backup --yes");
    ASSERT_EQ(backup.status, 0) << backup.errors;
    const test::TestFolder unpacked;
    const fs::path prepared = unpackAlbums(original, unpacked);
    EXPECT_FALSE(fs::exists(prepared / "Photos/Blank Scans")) << "a deselected album stays out";
    for (const auto& [name, album] : albums) {
        if (name == "Blank Scans") continue;
        for (const char* side : {"photos", "videos"}) {
            for (const std::string file : album[side]) {
                const fs::path copy = prepared / (side == std::string("photos") ? "Photos" : "Videos") / name / file;
                EXPECT_TRUE(FileManager::contentsOfFile(copy) ==
                            FileManager::contentsOfFile(original.path(kCameraRollFolder + file)))
                    << copy;
            }
        }
    }

    const test::SandboxDevice fresh = test::SandboxDevice::fresh("demo");
    ASSERT_TRUE(carryStorage(original, fresh));
    ASSERT_TRUE(albumsOf(fresh).empty()) << "nothing in the library yet";
    const auto restore = fresh.run("restore --yes");
    EXPECT_EQ(restore.status, 0) << restore.output << restore.errors;

    auto restored = albumsOf(fresh);
    EXPECT_EQ(restored.size(), 3u) << "the camera roll and the two albums created anew";
    for (const char* name : {"Camera Roll", "Holidays", "Work"}) {
        EXPECT_EQ(restored[name]["photos"], albums[name]["photos"]) << name;
        EXPECT_EQ(restored[name]["videos"], albums[name]["videos"]) << name;
    }
    for (const std::string file : albums["Camera Roll"]["photos"]) {
        EXPECT_TRUE(FileManager::contentsOfFile(fresh.path(kCameraRollFolder + file)) ==
                    FileManager::contentsOfFile(original.path(kCameraRollFolder + file)))
            << file;
    }
}

TEST(AlbumsProgramTest, TheOwnersRefusalInThePrivacyRecordIsToldAndNothingIsRead) {
    const test::SandboxDevice device("demo");
    ASSERT_TRUE(turnOnAlbums(device));
    fs::create_directories(device.path("/var/mobile/Library/TCC"));
    auto privacy =
        SqliteDatabase::open(device.path("/var/mobile/Library/TCC/TCC.db"), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    ASSERT_TRUE(privacy && privacy->exec("CREATE TABLE access (service TEXT, client TEXT, client_type INTEGER,"
                                         " allowed INTEGER, prompt_count INTEGER, csreq BLOB);"
                                         "INSERT INTO access VALUES ('kTCCServicePhotos', 'com.larkmoor.stowhaven',"
                                         " 0, 0, 1, NULL)"));

    const auto items = device.run("items");
    EXPECT_EQ(items.status, 0);
    EXPECT_NE(items.errors.find("The user has denied access to it. Try enabling it from "
                                "Settings>Privacy>Photos>Stowhaven"),
              std::string::npos)
        << items.errors;
    EXPECT_NE(items.output.find("Albums (0)"), std::string::npos) << items.output;
}

// Names of the library's database that would lead out of the media folder, and an asset
// that is a link to a file outside it, taken through a backup and its restore.
TEST(AlbumsProgramTest, NamesAndLinksOfAHostileLibraryLeadNowhereOutside) {
    const test::SandboxDevice device("demo");
    ASSERT_TRUE(turnOnAlbums(device));
    FileManager::writeFile(device.path("/etc/secret"), "root's own");
    fs::create_symlink("../../../../../etc/secret", device.path(std::string(kCameraRollFolder) + "IMG_0100.JPG"));
    runSql(device,
           "INSERT INTO ZGENERICASSET VALUES (100, 'IMG_0100.JPG', 'DCIM/100APPLE', 0, 0);"
           "INSERT INTO ZGENERICASSET VALUES (101, '../../../../etc/secret', 'DCIM/100APPLE', 0, 0);"
           "INSERT INTO ZGENERICASSET VALUES (102, 'secret', 'DCIM/../../../../etc', 0, 0);"
           "INSERT INTO ZGENERICALBUM VALUES (100, '../../../../etc/x', 2, 1, 1);"
           "INSERT INTO Z_ALBUMASSETS VALUES (100, 1, 1), (100, 100, 2), (100, 101, 3), (100, 102, 4);");

    const auto backup = device.run("--verbose backup --yes");
    ASSERT_EQ(backup.status, 0) << backup.errors;
    EXPECT_NE(backup.errors.find("Skipping album <../../../../etc/x>"), std::string::npos) << backup.errors;
    const test::TestFolder unpacked;
    const fs::path prepared = unpackAlbums(device, unpacked);
    for (const auto& entry : fs::recursive_directory_iterator(unpacked.path())) {
        EXPECT_NE(FileManager::contentsOfFile(entry.path()), "root's own") << entry.path();
    }
    EXPECT_FALSE(fs::exists(prepared / "etc"));

    const test::SandboxDevice fresh = test::SandboxDevice::fresh("demo");
    ASSERT_TRUE(carryStorage(device, fresh));
    const auto restore = fresh.run("--verbose restore --yes");
    EXPECT_EQ(restore.status, 0) << restore.errors;
    EXPECT_FALSE(fs::exists(fresh.path("/etc/x")));
    EXPECT_FALSE(fs::exists(fresh.path("/var/etc/x")));
    EXPECT_NE(restore.errors.find("Error: <../../../../etc/x> is not an album folder"), std::string::npos)
        << restore.errors;
}

}  // namespace
}  // namespace stowhaven
