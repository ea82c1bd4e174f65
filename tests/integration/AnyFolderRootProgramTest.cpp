// The device root may be any folder: one whose name holds a blank, a quote and what the shell
// would expand runs the whole cycle with the real tools, and nothing of its name is run.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
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
    const std::string keyFile = device.path("/../key's file");
    ASSERT_TRUE(FileManager::writeFile(keyFile, "correct horse\n"));
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled", "AutoScanStockAppsEnabled", "AutoScanOtherOptionsEnabled",
                               "BackupDebsEnabled", "EncryptBackupEnabled"}));

    const auto backup = device.run("backup --yes --title Before --key-file " + ShellQuote::path(keyFile));
    ASSERT_EQ(backup.status, 0) << backup.errors;
    const auto status = device.run("status");
    EXPECT_EQ(status.status, 0) << status.errors;
    EXPECT_NE(status.output.find("Before"), std::string::npos) << status.output;
    const auto history = device.run("history --json");
    EXPECT_EQ(history.status, 0) << history.errors;
    EXPECT_NE(history.output.find("Before\""), std::string::npos) << history.output;

    const std::string notes = *FileManager::contentsOfFile(device.path(kNotes));
    test::runCommand("dpkg --root=" + ShellQuote::path(device.root()) +
                     " --admindir=" + ShellQuote::path(device.path("/var/lib/dpkg")) + " --remove " + kTweak + " 2>&1");
    ASSERT_TRUE(FileManager::removeItem(device.path(kNotes)));

    const auto restore = device.run(std::string("restore --yes --log ") + kTweak);
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
