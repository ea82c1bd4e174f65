// A small file system mounted over the program's temporary folder or over the local
// storage, as a full disk: the job fails with the tool's word and status 1, the earlier
// session stays byte for byte, no new session stands, nothing is left in the temporary
// folder and the package database is left consistent. And a device tool that can't run.

#include "platform/ShellQuote.h"
#include "support/FolderSnapshot.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";
constexpr const char* kTemporaryFolder = "/var/tmp/stowhaven";

// A file system of SIZE over a folder of the device for as long as it stands.
class SmallFileSystem {
public:
    SmallFileSystem(std::string folder, const std::string& size) : folder_(std::move(folder)) {
        fs::create_directories(folder_);
        mounted_ = mount("tmpfs", folder_.c_str(), "tmpfs", 0, ("size=" + size + ",mode=0700").c_str()) == 0;
    }
    ~SmallFileSystem() {
        if (mounted_) umount(folder_.c_str());
    }
    SmallFileSystem(const SmallFileSystem&) = delete;
    SmallFileSystem& operator=(const SmallFileSystem&) = delete;

    bool isMounted() const { return mounted_; }

private:
    std::string folder_;
    bool mounted_ = false;
};

class FullDiskProgramTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "mounting a small file system needs root";
        ASSERT_TRUE(device_.turnOnScans());
    }

    void backUp() const {
        const auto backup = device_.run("backup --yes");
        ASSERT_EQ(backup.status, 0) << backup.errors;
    }

    // A second backup that fills FULL fails with the tool's word and leaves the storage as
    // the first one left it.
    void expectFailedBackupLeavesTheFirstSession(const std::string& word) const {
        const auto before = test::snapshot(device_.path(kStorageFolder));
        const auto backup = device_.run("backup --yes");
        EXPECT_EQ(backup.status, 1);
        EXPECT_NE(backup.errors.find("the backup failed: " + word), std::string::npos) << backup.errors;
        EXPECT_EQ(test::snapshot(device_.path(kStorageFolder)), before);
        EXPECT_TRUE(fs::is_empty(device_.path(kTemporaryFolder)));
    }

    const test::SandboxDevice device_{"demo"};
};

TEST_F(FullDiskProgramTest, ABackupThatFillsTheTemporaryFolderFailsAndKeepsTheEarlierSession) {
    backUp();
    const SmallFileSystem full(device_.path(kTemporaryFolder), "40k");
    ASSERT_TRUE(full.isMounted());
    expectFailedBackupLeavesTheFirstSession("split couldn't cut into parts <Preferences.tbz>");
}

// With one session to keep, the earlier one is only taken away once the new one stands.
TEST_F(FullDiskProgramTest, ABackupThatFillsTheStorageFailsAndKeepsTheOneSessionToKeep) {
    ASSERT_EQ(device_.run("settings MaximumBackupsInLocal 1").status, 0);
    // Room for one session, not for two.
    const SmallFileSystem storage(device_.path(kStorageFolder), "700k");
    ASSERT_TRUE(storage.isMounted());
    backUp();
    expectFailedBackupLeavesTheFirstSession("Couldn't ");
    EXPECT_NE(device_.run("history").output.find("1 session(s)"), std::string::npos);
}

TEST_F(FullDiskProgramTest, ARestoreThatFillsTheTemporaryFolderUnpacksNothingAndLeavesDpkgConsistent) {
    backUp();
    fs::remove_all(device_.path("/var/mobile/Library/Notes"));
    const SmallFileSystem full(device_.path(kTemporaryFolder), "40k");
    ASSERT_TRUE(full.isMounted());

    const auto restore = device_.run("restore --yes");

    EXPECT_EQ(restore.status, 1);
    EXPECT_NE(restore.output.find("failed             Notes data: its parts couldn't be joined"), std::string::npos)
        << restore.output;
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/Notes")));
    EXPECT_TRUE(fs::is_empty(device_.path(kTemporaryFolder)));
    EXPECT_EQ(test::runCommand("dpkg --admindir=" + ShellQuote::path(device_.root() + "/var/lib/dpkg") + " --audit"),
              "");
}

// In a mount namespace of the test's own, the empty device file stands over the host's split,
// which the shell then can't find or run: the program names the tool at start, and the
// backup fails naming the tool and the step.
TEST_F(FullDiskProgramTest, ABackupWithoutSplitFailsNamingItAndStoresNoSession) {
    const auto backup =
        device_.run("backup --yes", "unshare -m sh -c 'mount --bind /dev/null /usr/bin/split && exec \"$0\" \"$@\"' ");

    EXPECT_EQ(backup.status, 1);
    EXPECT_NE(backup.errors.find("stowhaven: the device has no split:"), std::string::npos) << backup.errors;
    EXPECT_NE(backup.errors.find("the backup failed: split couldn't cut into parts"), std::string::npos)
        << backup.errors;
    EXPECT_TRUE(fs::is_empty(device_.path(kStorageFolder))) << "no session stands";
}

}  // namespace
}  // namespace stowhaven
