// The Supervisor's start on a device, its temporary files and its current storage engine.

#include "core/Supervisor.h"
#include "core/TemporarySweep.h"
#include "platform/TemporaryDirectory.h"
#include "platform/UserDefaults.h"
#include "support/FakeStorageEngine.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

class SupervisorTest : public ::testing::Test {
protected:
    // Made at first use, so that a test can lay out the device before the start.
    Supervisor& supervisor() { return scope_.supervisor(); }

    test::SupervisorScope scope_;
    PreferenceStore& settings_ = UserDefaults::standard();
};

TEST_F(SupervisorTest, AStartLeavesWhatTheDeviceHasAloneAndAFolderInItsPlaceIsNotATool) {
    for (const char* file : {"/sbin/ifconfig", "/bin/mv", "/usr/bin/openssl", "/usr/bin/find",
                             "/var/root/Library/Preferences/com.apple.Accessibility.plist"}) {
        scope_.makeFile(file);
    }
    fs::create_directories(scope_.path("/usr/bin/gawk"));

    supervisor();

    const std::string sweep = "cd \"" + scope_.path("/var/tmp/stowhaven") + "\"; rm *-[0-9]*";
    EXPECT_EQ(scope_.services.shell.commands, (std::vector<std::string>{"apt-get install gawk", sweep}));
}

TEST_F(SupervisorTest, EachEnginesCountOfBackupsIsReadAtStartUnderItsOwnKey) {
    settings_.set("MaximumBackupsInFTP", 3);
    settings_.set("MaximumBackupsInOwnCloud", 2);
    supervisor();
    settings_.set("MaximumBackupsInFTP", 9);

    supervisor().setStorageToFTP();
    EXPECT_EQ(supervisor().maximumBackupsToKeep(), 3) << "as read at start";
    supervisor().setStorageToOwnCloud();
    EXPECT_EQ(supervisor().maximumBackupsToKeep(), 2);
    supervisor().setStorageToDropbox();
    EXPECT_EQ(supervisor().maximumBackupsToKeep(), 0);
}

TEST_F(SupervisorTest, TemporaryNamesAreInTheProgramsFolderAndAreSwept) {
    const std::string plain = supervisor().getTemporaryFileName(false);
    const std::string secure = supervisor().getTemporaryFileName(true);
    EXPECT_NE(plain, secure);
    for (const fs::path name : {plain, secure}) {
        EXPECT_EQ(name.parent_path(), TemporaryDirectory::path());
        EXPECT_TRUE(TemporarySweep::isSweptName(name.filename())) << name;
    }
}

TEST_F(SupervisorTest, DeletingRemovesFilesOnlyAndHasNothingToDoForTheRest) {
    const fs::path file = scope_.path("/var/mobile/old.txt");
    const fs::path folder = scope_.path("/var/mobile/Keep");
    fs::create_directories(folder);
    std::ofstream(file) << "x";
    std::ofstream(folder / "inside") << "x";

    EXPECT_TRUE(supervisor().deleteFileAtPath(file));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_TRUE(supervisor().deleteFileAtPath(file));
    EXPECT_TRUE(supervisor().deleteFileAtPath(folder));
    EXPECT_TRUE(fs::exists(folder / "inside"));
}

TEST_F(SupervisorTest, TheCurrentEngineFollowsTheLiveTypeAndAnUnknownOneWorksOnLocalStorage) {
    const auto local = test::FakeStorageEngine::install(StorageType::Local);
    const auto dropbox = test::FakeStorageEngine::install(StorageType::Dropbox);

    supervisor().setStorageToDropbox();
    EXPECT_EQ(supervisor().currentStorageEngine(), dropbox);
    supervisor().setCurrentStorageType(static_cast<StorageType>(42));
    EXPECT_EQ(supervisor().currentStorageEngine(), local);
    supervisor().setStorageToGDrive();
    EXPECT_EQ(supervisor().currentStorageEngine(), nullptr);
}

TEST_F(SupervisorTest, ALiveChangeOfEngineStaysUnsavedUntilPersisted) {
    supervisor().setStorageToSkyDrive();
    EXPECT_TRUE(supervisor().isStorageSkyDrive());
    EXPECT_FALSE(supervisor().isStorageSameAsDefault());
    EXPECT_FALSE(settings_.keyExists("CurrentStorageType"));

    supervisor().persistStorageType();
    EXPECT_EQ(settings_.object("CurrentStorageType"), PlistValue(3));
    EXPECT_TRUE(supervisor().isStorageSameAsDefault());
}

TEST_F(SupervisorTest, CachesAreFlushedOnTheEnginesMadeSoFarInTheirOrder) {
    auto flushes = std::make_shared<std::vector<std::string>>();
    for (const auto& [type, name] : std::vector<std::pair<StorageType, std::string>>{
             {StorageType::SkyDrive, "SkyDrive"},
             {StorageType::SugarSync, "SugarSync"},
             {StorageType::OwnCloud, "OwnCloud"},
             {StorageType::FTP, "FTP"},
             {StorageType::Dropbox, "Dropbox"},
             {StorageType::Box, "Box"},
             {StorageType::Local, "Local"},
             {StorageType::Addressbook, "Addressbook"},
         }) {
        test::FakeStorageEngine::install(type, name, flushes);
    }
    supervisor().cloudStorageFlushCache();
    EXPECT_EQ(*flushes, (std::vector<std::string>{"Box", "Dropbox", "FTP", "OwnCloud", "SugarSync", "SkyDrive"}));
}

}  // namespace
}  // namespace stowhaven
