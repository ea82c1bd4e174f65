#include "platform/FileManager.h"
#include "support/TestFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

class FileManagerTest : public ::testing::Test {
protected:
    void write(const std::string& name, const std::string& text) {
        fs::create_directories(fs::path(folder_ / name).parent_path());
        std::ofstream(folder_ / name) << text;
    }
    test::TestFolder folder_;
};

TEST_F(FileManagerTest, SizesAFolderByItsFilesWithoutFollowingLinks) {
    write("data/one", std::string(1000, 'x'));
    write("data/deeper/two", std::string(24, 'y'));
    write("elsewhere/big", std::string(5000, 'z'));
    fs::create_directory_symlink(folder_ / "elsewhere", folder_ / "data/link");

    EXPECT_EQ(FileManager::sizeOfItem(folder_ / "data"), 1024u);
    EXPECT_EQ(FileManager::sizeOfItem(folder_ / "data/one"), 1000u);
    EXPECT_EQ(FileManager::sizeOfItem(folder_ / "missing"), 0u);
}

TEST_F(FileManagerTest, CopyAndMoveNeverReplaceAnExistingItem) {
    write("from/file", "new");
    write("to", "old");
    EXPECT_FALSE(FileManager::copyItem(folder_ / "from", folder_ / "to"));
    EXPECT_FALSE(FileManager::moveItem(folder_ / "from", folder_ / "to"));
    EXPECT_EQ(*FileManager::contentsOfFile(folder_ / "to"), "old");

    EXPECT_TRUE(FileManager::copyItem(folder_ / "from", folder_ / "copy"));
    EXPECT_TRUE(FileManager::moveItem(folder_ / "from", folder_ / "moved"));
    EXPECT_EQ(*FileManager::contentsOfFile(folder_ / "copy/file"), "new");
    EXPECT_EQ(*FileManager::contentsOfFile(folder_ / "moved/file"), "new");
    EXPECT_FALSE(FileManager::fileExists(folder_ / "from"));
}

TEST_F(FileManagerTest, AFailedWriteLeavesWhatStoodThereAndNoLitter) {
    write("occupied/inside", "old");
    std::string error;
    EXPECT_FALSE(FileManager::writeFile(folder_ / "occupied", "new", &error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(*FileManager::contentsOfFile(folder_ / "occupied/inside"), "old");
    EXPECT_FALSE(FileManager::writeFile(folder_ / "missing/file", "new"));
    EXPECT_EQ(FileManager::contentsOfDirectory(folder_.path()), (std::vector<std::string>{"occupied"}));
}

// What a write that a kill cut short leaves, beside what only looks like it.
TEST_F(FileManagerTest, OnlyTheTemporaryFilesOfDeadWritesToTheTargetsAskedForAreRemoved) {
    for (const char* name : {".settings.plist.partial-AbC123", ".settings.plist.partial-LiVe12",
                             ".other.plist.partial-AbC123", "settings.plist.partial-AbC123",
                             ".settings.plist.partial-AbC12", ".settings.plist.partial-AbC12!", "elsewhere"}) {
        write(name, "half");
    }
    fs::create_directory(folder_ / ".settings.plist.partial-Dir123");
    fs::create_symlink(folder_ / "elsewhere", folder_ / ".settings.plist.partial-Lnk123");
    // A write still under way holds the lock on its temporary file.
    const int live = open((folder_ / ".settings.plist.partial-LiVe12").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(live, LOCK_EX), 0);

    FileManager::removeUnfinishedWrites(folder_.path(),
                                        [](const std::string& target) { return target == "settings.plist"; });
    close(live);

    EXPECT_EQ(FileManager::contentsOfDirectory(folder_.path()),
              (std::vector<std::string>{".other.plist.partial-AbC123", ".settings.plist.partial-AbC12",
                                        ".settings.plist.partial-AbC12!", ".settings.plist.partial-Dir123",
                                        ".settings.plist.partial-LiVe12", ".settings.plist.partial-Lnk123", "elsewhere",
                                        "settings.plist.partial-AbC123"}));
    EXPECT_EQ(FileManager::contentsOfFile(folder_ / "elsewhere"), "half");
}

}  // namespace
}  // namespace stowhaven
