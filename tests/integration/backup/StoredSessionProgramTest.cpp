// What "stowhaven backup" leaves on local storage: sessions for root alone, and after a
// storage that refuses the new one, the earlier session as it was.

#include "platform/FileManager.h"
#include "support/ProgramRun.h"
#include "support/SandboxDevice.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";

// Every item below FOLDER by relative path: a file's contents and mode, a folder's mode.
std::map<std::string, std::string> snapshot(const std::string& folder) {
    std::map<std::string, std::string> items;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const auto mode = fmt::format("{:04o}", static_cast<unsigned>(entry.symlink_status().permissions()));
        const std::string path = fs::relative(entry.path(), folder).string();
        items[path] = entry.is_directory() ? "folder " + mode : mode + " " + *FileManager::contentsOfFile(entry.path());
    }
    return items;
}

std::string names(const std::map<std::string, std::string>& items) {
    std::string listed;
    for (const auto& [path, item] : items) listed += path + " ";
    return listed;
}

class StoredSessionProgramTest : public ::testing::Test {
protected:
    StoredSessionProgramTest() {
        for (const char* setting : {"AutoScanPkgEnabled true", "AutoScanStockAppsEnabled true",
                                    "MaximumBackupsInLocal 1"}) {
            EXPECT_EQ(run(std::string("settings ") + setting).status, 0);
        }
    }

    test::ProgramOutcome run(const std::string& arguments, const std::string& environment = "") const {
        return test::runProgram("--root " + device_.root() + " " + arguments, environment);
    }
    std::string storage() const { return device_.path(kStorageFolder); }

    // The second backup fails with MESSAGE, and the first, the one session to keep, stays in
    // FOLDER as it was, byte for byte, and listed.
    void expectRefusedAndFirstKept(const std::string& folder, const std::string& message) const {
        const auto before = snapshot(folder);
        const auto outcome = run("backup --yes --title Second");
        EXPECT_EQ(outcome.status, 1);
        EXPECT_NE(outcome.errors.find("the backup failed: " + message), std::string::npos) << outcome.errors;
        const auto after = snapshot(folder);
        EXPECT_TRUE(after == before) << "now " << names(after) << "\nbefore " << names(before);
        const auto history = run("history");
        EXPECT_NE(history.output.find("First"), std::string::npos) << history.output;
        EXPECT_EQ(history.output.find("Second"), std::string::npos) << history.output;
    }

    const test::SandboxDevice device_{"minimal"};
};

TEST_F(StoredSessionProgramTest, HistoryFilesAndDataAreRootsAloneWhateverTheUmask) {
    ASSERT_EQ(run("backup --yes", "umask 000; ").status, 0);
    const auto items = snapshot(storage());
    ASSERT_TRUE(std::any_of(items.begin(), items.end(), [](const auto& item) {
        return item.first.find('/') != std::string::npos && !item.second.starts_with("folder");
    })) << "some data lies in a data folder";
    for (const auto& [path, item] : items) {
        EXPECT_TRUE(item.starts_with(item.starts_with("folder") ? "folder 0700" : "0600 ")) << path;
    }
}

// A full disk, as root meets it: a small memory file system over the storage folder.
TEST_F(StoredSessionProgramTest, AFullStorageFailsTheBackupAndKeepsTheOneSessionToKeep) {
    if (geteuid() != 0) GTEST_SKIP() << "mounting a file system needs root";
    FileManager::createDirectory(storage(), true);
    if (mount("tmpfs", storage().c_str(), "tmpfs", 0, "size=8m") != 0) GTEST_SKIP() << "mounting isn't allowed here";
    struct Unmount {
        std::string path;
        ~Unmount() { umount(path.c_str()); }
    } unmount{storage()};

    ASSERT_EQ(run("backup --yes --title First").status, 0);
    std::ofstream filler(storage() + "/filler", std::ios::binary);
    for (const std::string block(4096, '\0'); filler.write(block.data(), block.size()).flush();) {
    }
    filler.close();
    expectRefusedAndFirstKept(storage(), "Couldn't write <" + storage() + "/");
}

// The device's mv is never handed a path with a blank: the history is written, the data
// is not.
TEST_F(StoredSessionProgramTest, DataThatCantBeStoredFailsTheBackupAndKeepsTheOneSessionToKeep) {
    ASSERT_EQ(run("backup --yes --title First").status, 0);
    const std::string withBlank = storage() + " kept";
    ASSERT_TRUE(FileManager::moveItem(storage(), withBlank));
    ASSERT_EQ(run("settings LocalStoragePath '" + withBlank + "'").status, 0);
    expectRefusedAndFirstKept(withBlank, "Couldn't move file from <");
}

}  // namespace
}  // namespace stowhaven
