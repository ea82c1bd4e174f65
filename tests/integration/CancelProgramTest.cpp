// Ctrl-C on the terminal, and "yes" to the question it brings, while a real backup or restore
// runs one of its tools: the job ends with status 130, its temporary files go, no tool it
// started still runs, dpkg's database stays consistent and every earlier session stays byte
// for byte; a backup canceled before its record is stored leaves no session.
//
// The job is held at its step by a stand-in for the step's tool, in a mount namespace of the
// test's own: the stand-in says so on the terminal and waits until it is ended, so that the
// cancel lands at that step and no later.

#include "platform/ShellQuote.h"
#include "support/FolderSnapshot.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";
constexpr const char* kTemporaryFolder = "/var/tmp/stowhaven";

// The processes whose command line names FOLDER.
int processesNaming(const std::string& folder) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "cmdline");
        const std::string line((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        if (line.find(folder) != std::string::npos) ++count;
    }
    return count;
}

struct Step {
    const char* job;
    const char* tool;
    // A text of the tool's arguments at the step; the tool's other runs go through.
    const char* arguments;
};

class CancelProgramTest : public ::testing::TestWithParam<Step> {
protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "a mount namespace needs root";
        ASSERT_TRUE(device_.turnOnScans());
        const auto backup = device_.run("backup --yes --title Earlier");
        ASSERT_EQ(backup.status, 0) << backup.errors;
    }

    // A prefix that runs the program with /usr/bin/TOOL held whenever its arguments hold
    // ARGUMENTS; the stand-in writes "held: TOOL" on the terminal first.
    std::string holding(const std::string& tool, const std::string& arguments) const {
        const fs::path real = stand_.path() / "real";
        const fs::path standIn = stand_.path() / "stand-in";
        std::ofstream(real).put('\n');
        std::ofstream(standIn) << "#!/bin/sh\ncase \"$*\" in *'" << arguments << "'*)\n"
                               << "  echo 'held: " << tool << "' > /dev/tty; exec sleep infinity;;\nesac\n"
                               << "exec " << ShellQuote::path(real.string()) << " \"$@\"\n";
        fs::permissions(standIn, fs::perms::owner_all);
        return "env HELD_REAL=" + ShellQuote::path(real.string()) +
               " HELD_STAND_IN=" + ShellQuote::path(standIn.string()) + " unshare -m sh -c 'mount --bind /usr/bin/" +
               tool + " \"$HELD_REAL\" && mount --bind \"$HELD_STAND_IN\" /usr/bin/" + tool +
               " && exec \"$0\" \"$@\"' ";
    }

    const test::SandboxDevice device_{"demo"};
    const test::TestFolder stand_;
};

TEST_P(CancelProgramTest, AJobCanceledAtItsStepLeavesEverythingAsItWas) {
    const Step step = GetParam();
    const auto before = test::snapshot(device_.path(kStorageFolder));

    test::TerminalProgram terminal("--root " + ShellQuote::path(device_.root()) + " " + step.job,
                                   holding(step.tool, step.arguments));
    ASSERT_TRUE(terminal.waitFor(std::string("held: ") + step.tool)) << terminal.screen();
    terminal.type("\x03");
    // While the catalogue loads no job runs yet: Ctrl-C leaves at once, with no question.
    if (terminal.waitFor("cancel the operation in progress?")) terminal.type("2\n");

    EXPECT_EQ(terminal.finish(), 130) << terminal.screen();
    EXPECT_TRUE(test::snapshot(device_.path(kStorageFolder)) == before) << "the storage changed";
    EXPECT_TRUE(fs::is_empty(device_.path(kTemporaryFolder)))
        << "left: " << test::runCommand("ls -AR " + ShellQuote::path(device_.path(kTemporaryFolder)));
    EXPECT_EQ(processesNaming(device_.root()), 0) << "a tool of the job still runs";
    EXPECT_EQ(test::runCommand("dpkg --admindir=" + ShellQuote::path(device_.root() + "/var/lib/dpkg") + " --audit"),
              "");
}

INSTANTIATE_TEST_SUITE_P(Steps, CancelProgramTest,
                         ::testing::Values(Step{"backup --yes", "dpkg-query", "Maintainer"},
                                           Step{"backup --yes", "tar", "Calendar"},
                                           Step{"backup --yes", "tar", "Webclips"},
                                           Step{"restore --yes", "apt-get", "update"},
                                           Step{"restore --yes", "tar", "Calendar.tbz"}));

}  // namespace
}  // namespace stowhaven
