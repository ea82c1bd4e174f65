// "stowhaven backup" killed with SIGKILL at one step after another of its run, on a sandbox
// device with local storage: the sessions stored before stay byte for byte as they were,
// every history file on the storage reads, the settings read, and the next start clears
// what the killed run left half written. While one backup runs, a second program refuses
// any job on the device.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "platform/plist/PlistCodec.h"
#include "support/FolderSnapshot.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <regex>
#include <thread>

namespace stowhaven {
namespace {

constexpr const char* kSettingsFolder = "/var/mobile/Library/Preferences";
constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";
constexpr const char* kSettingsFile = "/var/mobile/Library/Preferences/com.larkmoor.stowhaven.plist";

// Sessions are stamped to the second, and a session never takes the place of another of the
// same stamp: each backup starts on a second of its own.
void waitForTheNextSecond() {
    std::this_thread::sleep_until(std::chrono::ceil<std::chrono::seconds>(std::chrono::system_clock::now()));
}

// The names in FOLDER that a write cut short would leave, as the program names them.
std::vector<std::string> halfWritten(const std::string& folder) {
    std::vector<std::string> names;
    for (const std::string& name : FileManager::contentsOfDirectory(folder).value_or(std::vector<std::string>{})) {
        if (name.find(".partial-") != std::string::npos) names.push_back(name);
    }
    return names;
}

class KilledBackupProgramTest : public ::testing::Test {
protected:
    KilledBackupProgramTest() {
        // The tools that a killed program started run on to their end, as on the device; the
        // test adopts them, so that it can wait for them before it looks.
        prctl(PR_SET_CHILD_SUBREAPER, 1);
        EXPECT_TRUE(device_.turnOn({"AutoScanPkgEnabled", "AutoScanStockAppsEnabled"}));
    }
    ~KilledBackupProgramTest() override { prctl(PR_SET_CHILD_SUBREAPER, 0); }

    void killBackupAt(const std::string& step) const {
        waitForTheNextSecond();
        test::TerminalProgram backup("--root " + ShellQuote::path(device_.root()) + " --verbose backup --yes");
        ASSERT_TRUE(backup.waitFor(step)) << backup.screen();
        backup.signal(SIGKILL);
        EXPECT_EQ(backup.finish(), -1);
        while (waitpid(-1, nullptr, 0) > 0 || errno == EINTR) {
        }
    }

    void expectEveryHistoryFileReads() const {
        for (const std::string& name :
             FileManager::contentsOfDirectory(storage_).value_or(std::vector<std::string>{})) {
            if (!name.ends_with(".stowhvn")) continue;
            const auto outcome = device_.run("inspect " + ShellQuote::path(storage_ + "/" + name));
            EXPECT_EQ(outcome.status, 0) << name << ": " << outcome.errors;
            EXPECT_NE(outcome.output.find("Session 1 of 1"), std::string::npos) << name << ": " << outcome.output;
        }
    }

    const test::SandboxDevice device_{"demo"};
    const std::string storage_ = device_.path(kStorageFolder);
    const std::string settingsFolder_ = device_.path(kSettingsFolder);
};

TEST_F(KilledBackupProgramTest, AKillAtAnyStepKeepsTheStoredSessionsAndTheNextStartClearsWhatItLeft) {
    waitForTheNextSecond();
    ASSERT_EQ(device_.run("backup --yes --title First").status, 0);

    for (const char* step : {"Backup data size:", "Creating data dir for <Preferences>", "Moving ",
                             "Archiving data for <Chat>", "Upload succeeded!"}) {
        SCOPED_TRACE(step);
        const auto stored = test::snapshot(storage_);
        killBackupAt(step);

        const auto after = test::snapshot(storage_);
        for (const auto& [path, item] : stored) {
            const auto found = after.find(path);
            EXPECT_TRUE(found != after.end() && found->second == item) << path << " changed";
        }
        expectEveryHistoryFileReads();
        const auto settings = PlistCodec::readFile(device_.path(kSettingsFile));
        EXPECT_TRUE(settings && settings->isDictionary());

        // What a kill in the middle of a write leaves, ours and look-alikes that are not.
        for (const std::string& stray : {storage_ + "/.2020-01-01_00~00~00.stowhvn.partial-AbC123",
                                         settingsFolder_ + "/.com.larkmoor.stowhaven.plist.partial-XyZ789"}) {
            ASSERT_TRUE(FileManager::writeFile(stray, "half"));
        }
        const std::vector<std::string> notOurs = {".com.apple.springboard.plist.partial-a1B2c3",
                                                  ".com.larkmoor.stowhaven.plist.partial-a1B2",
                                                  "com.larkmoor.stowhaven.plist.partial-a1B2c3"};
        for (const std::string& name : notOurs) ASSERT_TRUE(FileManager::writeFile(settingsFolder_ + "/" + name, "x"));

        const auto nextStart = device_.run("history");
        EXPECT_EQ(nextStart.status, 0) << nextStart.errors;
        EXPECT_NE(nextStart.output.find("First"), std::string::npos) << nextStart.output;
        EXPECT_TRUE(halfWritten(storage_).empty()) << testing::PrintToString(halfWritten(storage_));
        EXPECT_EQ(halfWritten(settingsFolder_), notOurs);
        for (const std::string& name : notOurs) FileManager::removeItem(settingsFolder_ + "/" + name);
    }

    waitForTheNextSecond();
    const auto whole = device_.run("backup --yes --title Last");
    EXPECT_EQ(whole.status, 0) << whole.errors;
}

// The second program names the running one and leaves its working files alone; once the
// first is killed, nothing of it stands in the way.
TEST_F(KilledBackupProgramTest, ASecondProgramRefusesAJobWhileOneRunsAndLeavesItsWorkingFiles) {
    namespace fs = std::filesystem;
    const std::string temporary = device_.path("/var/tmp/stowhaven");
    test::TerminalProgram first("--root " + ShellQuote::path(device_.root()) + " --verbose backup --yes");
    ASSERT_TRUE(first.waitFor("Creating data dir for <Preferences>")) << first.screen();
    first.signal(SIGSTOP);
    // Working files of the running job, named as the sweeps at start delete them.
    const std::vector<std::string> working = {"KEPT-000", "kept.idx", "pkgkept", "4kept", "debs/kept.deb"};
    for (const std::string& name : working) {
        FileManager::createDirectory(fs::path(temporary + "/" + name).parent_path().string(), true);
        ASSERT_TRUE(FileManager::writeFile(temporary + "/" + name, "part of the running backup"));
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
    for (const std::string& name : working) EXPECT_TRUE(FileManager::fileExists(temporary + "/" + name)) << name;

    first.signal(SIGKILL);
    EXPECT_EQ(first.finish(), -1);
    // The lock went with the killed process: the next start sweeps what it left.
    ASSERT_EQ(device_.run("status").status, 0);
    for (const std::string& name : working) EXPECT_FALSE(FileManager::fileExists(temporary + "/" + name)) << name;
}

}  // namespace
}  // namespace stowhaven
