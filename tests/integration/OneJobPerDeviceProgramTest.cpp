// Two programs on one sandbox device: while the first runs a backup, a second refuses any
// job, names the running one, and leaves the first one's working files alone; once the
// first is killed, nothing of it stands in the way.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <regex>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

class OneJobPerDeviceProgramTest : public ::testing::Test {
protected:
    const test::SandboxDevice device_{"minimal"};
    const std::string temporary_ = device_.path("/var/tmp/stowhaven");
};

TEST_F(OneJobPerDeviceProgramTest, ASecondProgramRefusesAJobWhileOneRunsAndLeavesItsWorkingFiles) {
    ASSERT_EQ(device_.run("settings AutoScanPkgEnabled true").status, 0);
    test::TerminalProgram first("--root " + ShellQuote::path(device_.root()) + " --verbose backup --yes");
    ASSERT_TRUE(first.waitFor("Creating data dir for <Preferences>")) << first.screen();
    first.signal(SIGSTOP);
    // Working files of the running job, named as the sweeps at start delete them.
    const std::vector<std::string> working = {"KEPT-000", "kept.idx", "pkgkept", "4kept", "debs/kept.deb"};
    for (const std::string& name : working) {
        FileManager::createDirectory(fs::path(temporary_ + "/" + name).parent_path().string(), true);
        ASSERT_TRUE(FileManager::writeFile(temporary_ + "/" + name, "part of the running backup"));
    }

    for (const char* job : {"backup --yes", "restore --yes"}) {
        const auto second = device_.run(job);
        EXPECT_EQ(second.status, 1) << job;
        std::smatch running;
        ASSERT_TRUE(std::regex_search(
            second.errors, running, std::regex("A backup started on .* by process ([0-9]+) is running on this device")))
            << job << ": " << second.errors;
        EXPECT_EQ(fs::read_symlink("/proc/" + running[1].str() + "/exe"), fs::path(STOWHAVEN_PROGRAM))
            << "the process named is the first program";
    }
    for (const std::string& name : working) EXPECT_TRUE(FileManager::fileExists(temporary_ + "/" + name)) << name;

    first.signal(SIGKILL);
    EXPECT_EQ(first.finish(), -1);
    // The lock went with the killed process: the next start sweeps what it left.
    ASSERT_EQ(device_.run("status").status, 0);
    for (const std::string& name : working) EXPECT_FALSE(FileManager::fileExists(temporary_ + "/" + name)) << name;
}

}  // namespace
}  // namespace stowhaven
