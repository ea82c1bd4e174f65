// The program runs its tools as root: what a stranger's note carries, or what another user
// put where the program's folders go, never runs and is never deleted or written through.

#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

// A search path without /usr/sbin, as a device's may be: a planted ifconfig is then the
// only one the shell could find.
constexpr const char* kNarrowPath = "PATH=/usr/bin:/bin ";

bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// A script that leaves MARKER behind when something runs it.
std::string plantedTool(const std::string& marker) {
    return "printf '#!/bin/sh\\ntouch %s\\n' " + ShellQuote::path(ShellQuote::path(marker));
}

// Every path under FOLDER, with its size, for telling whether anything changed there.
std::string listing(const std::string& folder) {
    return fs::exists(folder)
               ? test::runCommand("cd " + ShellQuote::path(folder) + " && find . -printf '%p %s\\n' | sort")
               : "";
}

bool isPrivateFolder(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == 0 &&
           (status.st_mode & 07777) == 0700;
}

// The names beside PATH that it was moved aside to.
std::vector<fs::path> movedAside(const std::string& path) {
    std::vector<fs::path> found;
    const std::string prefix = fs::path(path).filename().string() + ".moved-";
    for (const auto& entry : fs::directory_iterator(fs::path(path).parent_path())) {
        if (entry.path().filename().string().starts_with(prefix)) found.push_back(entry.path());
    }
    return found;
}

TEST(HostileFoldersProgramTest, AnOldNoteIsReadInMemoryAndWhatItCarriesNeverRuns) {
    const test::SandboxDevice device("minimal");
    const test::TestFolder folder;
    const std::string marker = folder / "ifconfig-ran";
    // The package list beside an ifconfig where unpacking in the temporary folder would put it
    // on the search path; members named "./..." as tar writes them from ".".
    test::runCommand("cd " + ShellQuote::path(folder.path().string()) +
                     " && mkdir -p packed/var/mobile packed/tools && cd packed && "
                     "printf 'Old Tweak\\tcom.old.tweak\\t0.9\\tme\\tTweaks\\tmobilesubstrate\\n' > "
                     "var/mobile/cydiaApps.txt && touch -d '2010-06-01 12:00:00 UTC' var/mobile/cydiaApps.txt && " +
                     plantedTool(marker) + " > tools/ifconfig && chmod 755 tools/ifconfig && " +
                     "tar -czf ../cydiaApps.tbz ./var ./tools && cd .. && "
                     "uuencode -m cydiaApps.tbz cydiaApps.tbz > note.txt");
    ASSERT_EQ(device.run("status", kNarrowPath).status, 0);
    const std::string temporary = device.path("/var/tmp/stowhaven");
    const std::string tools = device.path("/var/lib/stowhaven/tools");
    const std::string before = listing(temporary) + listing(tools);
    ASSERT_TRUE(has(before, "plutil")) << "the tool folder is made where the test looks";

    const auto inspect = device.run("inspect --json " + ShellQuote::path(folder / "note.txt"), kNarrowPath);
    ASSERT_EQ(inspect.status, 0) << inspect.errors;
    const auto sessions = nlohmann::json::parse(inspect.output);
    ASSERT_EQ(sessions.size(), 1u);
    EXPECT_EQ(sessions[0]["rawData"], "Old Tweak\tcom.old.tweak\t0.9\tme\tTweaks\tmobilesubstrate\n");
    EXPECT_EQ(sessions[0]["sessionDate"], "2010-06-01T12:00:00Z");
    EXPECT_EQ(listing(temporary) + listing(tools), before);

    EXPECT_EQ(device.run("status", kNarrowPath).status, 0);
    EXPECT_FALSE(fs::exists(marker)) << "the note's ifconfig ran";
    EXPECT_EQ(test::runCommand("find " + ShellQuote::path(device.root()) + " -name ifconfig"), "");
}

TEST(HostileFoldersProgramTest, AnOldNoteThatUnpacksBeyondAnyPackageListIsRefused) {
    const test::SandboxDevice device("minimal");
    const test::TestFolder folder;
    // 80 MiB of zeros, a few dozen KiB once packed.
    test::runCommand("cd " + ShellQuote::path(folder.path().string()) +
                     " && mkdir -p var/mobile && truncate -s 80M var/mobile/cydiaApps.txt && "
                     "tar -czf cydiaApps.tbz var && uuencode -m cydiaApps.tbz cydiaApps.tbz > note.txt");

    const auto inspect = device.run("--verbose inspect " + ShellQuote::path(folder / "note.txt"), kNarrowPath);
    EXPECT_EQ(inspect.status, 1);
    EXPECT_TRUE(has(inspect.errors, "holds no backup history that can be read")) << inspect.errors;
    EXPECT_TRUE(has(inspect.errors, "Refused a gzip stream that inflates beyond")) << inspect.errors;
}

// Folders another user made first where the program's temporary folder and tool folder go.
class ForeignFolderProgramTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "giving a folder to another user takes root";
    }

    // Runs the program, which must leave both places as folders of its own, with the other
    // user's things moved aside; answers its log.
    std::string runAndCheck() {
        const auto outcome = device_.run("--verbose status", kNarrowPath);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        for (const std::string& path : {temporary_, toolParent_}) {
            EXPECT_TRUE(isPrivateFolder(path)) << path;
            EXPECT_EQ(movedAside(path).size(), 1u) << path;
        }
        EXPECT_TRUE(isPrivateFolder(toolParent_ + "/tools"));
        EXPECT_FALSE(fs::exists(marker_)) << "a planted tool ran";
        return outcome.errors;
    }

    test::SandboxDevice device_{"minimal"};
    test::TestFolder folder_;
    const std::string temporary_ = device_.path("/var/tmp/stowhaven");
    const std::string toolParent_ = device_.path("/var/lib/stowhaven");
    const std::string marker_ = folder_ / "ifconfig-ran";
};

TEST_F(ForeignFolderProgramTest, AnotherUsersFolderIsMovedAsideWithItsFilesKept) {
    for (const std::string& path : {temporary_, toolParent_}) {
        test::runCommand("mkdir -p " + ShellQuote::path(path + "/tools") + " && touch " +
                         ShellQuote::path(path + "/left-1.txt") + " && " + plantedTool(marker_) + " > " +
                         ShellQuote::path(path + "/tools/ifconfig") + " && chmod 755 " +
                         ShellQuote::path(path + "/tools/ifconfig") + " && chmod 0777 " + ShellQuote::path(path) +
                         " && chown -R 1234 " + ShellQuote::path(path));
    }

    const std::string log = runAndCheck();
    for (const std::string& path : {temporary_, toolParent_}) {
        EXPECT_TRUE(has(log, "<" + path +
                                 "> was a folder owned by uid 1234 with mode 0777, not the program's own "
                                 "folder: moved aside to <" +
                                 fs::path(path).filename().string() + ".moved-"))
            << log;
        const auto aside = movedAside(path);
        ASSERT_EQ(aside.size(), 1u);
        struct stat status {};
        EXPECT_EQ(::lstat((aside[0] / "left-1.txt").c_str(), &status), 0) << "the other user's file was deleted";
        EXPECT_EQ(status.st_uid, 1234u);
    }
}

TEST_F(ForeignFolderProgramTest, ALinkIsMovedAsideAndWhatItPointsAtIsLeftAlone) {
    for (const std::string& path : {temporary_, toolParent_}) {
        const std::string target = folder_ / ("target-of-" + fs::path(path).filename().string());
        test::runCommand("mkdir -p " + ShellQuote::path(target + "/tools") + " && touch " +
                         ShellQuote::path(target + "/left-1.txt") + " && " + plantedTool(marker_) + " > " +
                         ShellQuote::path(target + "/tools/ifconfig") + " && chmod 755 " +
                         ShellQuote::path(target + "/tools/ifconfig") + " && mkdir -p " +
                         ShellQuote::path(fs::path(path).parent_path().string()) + " && ln -s " +
                         ShellQuote::path(target) + " " + ShellQuote::path(path));
    }
    const std::string before = listing(folder_.path().string());

    const std::string log = runAndCheck();
    EXPECT_EQ(listing(folder_.path().string()), before) << "something was written through a link";
    for (const std::string& path : {temporary_, toolParent_}) {
        EXPECT_TRUE(has(log, "<" + path + "> was a symbolic link to <")) << log;
        const auto aside = movedAside(path);
        ASSERT_EQ(aside.size(), 1u);
        EXPECT_TRUE(fs::is_symlink(aside[0]));
    }
}

}  // namespace
}  // namespace stowhaven
