// A device tool that can't run: in a mount namespace of the test's own, the empty device
// file stands over the host's tool, which the shell then can't find or run. The program
// names the tool at start, and the job that needs it fails naming the tool and the step.

#include "support/SandboxDevice.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";

// The prefix that runs the program with TOOL of /usr/bin out of use for it alone.
std::string without(const std::string& tool) {
    return "unshare -m sh -c 'mount --bind /dev/null /usr/bin/" + tool + " && exec \"$0\" \"$@\"' ";
}

TEST(MissingToolProgramTest, ABackupWithoutSplitFailsNamingItAndStoresNoSession) {
    if (geteuid() != 0) GTEST_SKIP() << "a mount namespace needs root";
    const test::SandboxDevice device("minimal");
    ASSERT_TRUE(device.turnOnScans());

    const auto backup = device.run("backup --yes", without("split"));

    EXPECT_EQ(backup.status, 1);
    EXPECT_NE(backup.errors.find("stowhaven: the device has no split:"), std::string::npos) << backup.errors;
    EXPECT_NE(backup.errors.find("the backup failed: split couldn't cut into parts"), std::string::npos)
        << backup.errors;
    const auto stored = fs::directory_iterator(device.path(kStorageFolder));
    EXPECT_EQ(std::distance(fs::begin(stored), fs::end(stored)), 0) << "no session stands";
}

}  // namespace
}  // namespace stowhaven
