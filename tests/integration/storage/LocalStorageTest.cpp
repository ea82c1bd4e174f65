// The local engine: the storage folder and its fallback, copies that never overwrite,
// moves by the device's mv, the deep listing; what every engine does is the contract suite's.

#include "core/ProcessFlags.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "platform/UserDefaults.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/StorageRequest.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace stowhaven {
namespace {

// A device of the test's own whose commands run, with local storage in its usual place.
class LocalStorageTest : public ::testing::Test {
protected:
    static std::shared_ptr<LocalStorageHelper> makeEngine(test::SupervisorScope& scope) {
        scope.services.shell.runsCommands = true;
        LocalStorageHelper::settleStoragePath();
        return LocalStorageHelper::createLocalStorageHelper();
    }

    std::string folder() const { return localStoragePath(); }
    void writeInFolder(const std::string& path, const std::string& contents) {
        FileManager::createDirectory(std::filesystem::path(folder() + "/" + path).parent_path().string(), true);
        FileManager::writeFile(folder() + "/" + path, contents);
    }

    test::SupervisorScope scope_;
    std::shared_ptr<LocalStorageHelper> local_ = makeEngine(scope_);
    LocalStorageHelper& engine_ = *local_;
};

TEST_F(LocalStorageTest, HistoryFilesInFoldersBelowAreListedByTheirRelativePaths) {
    writeInFolder("2024-01-01_10~00~00.stowhvn", "a");
    writeInFolder("2024-01-01_10~00~00/NOTES/NOTES_001", "part");
    writeInFolder("moved/2023-06-01_10~00~00.stowhvn", "b");
    engine_.loadMostRecentBackupSession();
    EXPECT_EQ(engine_.existingFiles(),
              (std::vector<std::string>{"2024-01-01_10~00~00.stowhvn", "moved/2023-06-01_10~00~00.stowhvn"}));
    EXPECT_TRUE(FileManager::fileExists(TemporaryDirectory::path() + "/moved/2023-06-01_10~00~00.stowhvn"));
}

TEST_F(LocalStorageTest, ACopyNeverOverwritesAFileLeftInTheTemporaryFolder) {
    writeInFolder("2024-01-01_10~00~00.stowhvn", "stored");
    FileManager::writeFile(TemporaryDirectory::path() + "/2024-01-01_10~00~00.stowhvn", "left over");
    engine_.loadMostRecentBackupSession();
    ASSERT_TRUE(engine_.errorMessage());
    EXPECT_TRUE(engine_.errorMessage()->starts_with("Error <")) << *engine_.errorMessage();
    EXPECT_NE(engine_.errorMessage()->find("while copying file from"), std::string::npos);
}

// The device's mv moves the file, whatever a hostile name holds.
TEST_F(LocalStorageTest, AnUploadMovesTheFileWhateverItsNameHolds) {
    const Date date(700000000);
    test::request(engine_, [&] { engine_.createDirectory("NOTES", date); });
    for (const std::string name : {"NOTES_001", R"(-NOTES 002 "q" $(touch pwned) `touch pwned` \x)"}) {
        const std::string part = TemporaryDirectory::path() + "/" + name;
        FileManager::writeFile(part, "notes");
        EXPECT_TRUE(test::request(engine_, [&] { engine_.uploadFile(part, date, "NOTES"); }).succeeded) << name;
        EXPECT_FALSE(FileManager::fileExists(part)) << "moved, not copied";
        EXPECT_EQ(FileManager::contentsOfFile(folder() + "/" + StorageLayout::stamp(date) + "/NOTES/" + name), "notes");
    }
    EXPECT_FALSE(FileManager::fileExists(TemporaryDirectory::path() + "/pwned"));
    EXPECT_TRUE(test::request(engine_, [&] { engine_.uploadFile("/nonexistent", date, "NOTES"); }).failed);
}

// A history that isn't written is no session: the request fails and nothing is listed. (A
// session of the same stamp, and deletion, are the engines' contract, shown for every engine.)
TEST_F(LocalStorageTest, AHistoryUploadThatWritesNothingFails) {
    FileManager::removeItem(folder());
    EXPECT_TRUE(test::request(engine_, [&] { engine_.uploadBackupHistory("text", Date(2)); }).failed);
    EXPECT_TRUE(engine_.errorMessage().value_or("").starts_with("Couldn't write")) << *engine_.errorMessage();
    EXPECT_TRUE(engine_.existingFiles().empty());
}

TEST(LocalStorageFallbackTest, WithoutItsFolderTheDeviceFallsBackToTheAddressBook) {
    test::SupervisorScope scope;
    scope.makeFile("/var/mobile/blocked");
    UserDefaults::standard().set("LocalStoragePath", scope.path("/var/mobile/blocked/Stowhaven"));
    LocalStorageHelper::settleStoragePath();
    const auto engine = LocalStorageHelper::createLocalStorageHelper();
    EXPECT_EQ(engine->errorMessage(), "Couldn't create <" + scope.path("/var/mobile/blocked/Stowhaven") + ">!");
    EXPECT_TRUE(scope.supervisor().isStorageAddressbook());
}

}  // namespace
}  // namespace stowhaven
