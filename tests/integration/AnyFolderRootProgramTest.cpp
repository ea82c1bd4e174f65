// The device root may be any folder: one whose name holds a blank, a quote and what the shell
// would expand runs the whole cycle with the real tools, and nothing of its name is run.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/ProgramRun.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kHostileName = "owner's device $(touch ran) `touch ran`";
constexpr const char* kNotes = "/var/mobile/Library/Notes/notes.sqlite";
constexpr const char* kTweak = "com.fuyuchi.flex2";

bool anythingNamedRanUnder(const fs::path& folder) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().filename() == "ran") return true;
    }
    return false;
}

TEST(AnyFolderRootProgramTest, BackupStatusHistoryAndRestoreRunOnARootWhoseNameTheShellWouldRead) {
    const test::SandboxDevice demo("demo");
    const test::SandboxDevice device(demo, kHostileName);
    const std::string root = "--root " + ShellQuote::path(device.root()) + " ";
    const std::string keyFile = device.path("/../key's file");
    ASSERT_TRUE(FileManager::writeFile(keyFile, "correct horse\n"));
    for (const char* setting : {"AutoScanPkgEnabled", "AutoScanStockAppsEnabled", "AutoScanOtherOptionsEnabled",
                                "BackupDebsEnabled", "EncryptBackupEnabled"}) {
        ASSERT_EQ(test::runProgram(root + "settings " + setting + " true").status, 0) << setting;
    }

    const auto backup = test::runProgram(root + "backup --yes --title Before --key-file " + ShellQuote::path(keyFile));
    ASSERT_EQ(backup.status, 0) << backup.errors;
    const auto status = test::runProgram(root + "status");
    EXPECT_EQ(status.status, 0) << status.errors;
    EXPECT_NE(status.output.find("Before"), std::string::npos) << status.output;
    const auto history = test::runProgram(root + "history --json");
    EXPECT_EQ(history.status, 0) << history.errors;
    EXPECT_NE(history.output.find("Before\""), std::string::npos) << history.output;

    const std::string notes = *FileManager::contentsOfFile(device.path(kNotes));
    test::runCommand("dpkg --root=" + ShellQuote::path(device.root()) +
                     " --admindir=" + ShellQuote::path(device.path("/var/lib/dpkg")) + " --remove " + kTweak + " 2>&1");
    ASSERT_TRUE(FileManager::removeItem(device.path(kNotes)));

    const auto restore = test::runProgram(root + "restore --yes --log " + kTweak);
    EXPECT_EQ(restore.status, 0) << restore.errors;
    EXPECT_NE(test::runCommand("dpkg-query --admindir=" + ShellQuote::path(device.path("/var/lib/dpkg")) +
                               " -W -f='${Package} ${Status}\\n' " + kTweak)
                  .find("install ok installed"),
              std::string::npos);
    EXPECT_EQ(FileManager::contentsOfFile(device.path(kNotes)), notes);
    EXPECT_FALSE(anythingNamedRanUnder(fs::path(device.root()).parent_path()));
}

}  // namespace
}  // namespace stowhaven
