// Sessions and archives crafted as an attacker would make them, with the real tar, put on
// the local storage of a sandbox device and restored by the program as root: nothing lands,
// changes owner or gains a privilege outside the places each kind owns, and the log names
// what was refused.

#include "archive/HistoryText.h"
#include "core/ModelClasses.h"
#include "core/SessionHistory.h"
#include "items/ArchivableFolder.h"
#include "items/ArchivableFolderTable.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/ProgramRun.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"
#include "support/TerminalProgram.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";
constexpr unsigned kStranger = 1234;

struct Ownership {
    unsigned owner;
    unsigned mode;
};

Ownership ownershipOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return {status.st_uid, status.st_mode & 07777U};
}

// Each test backs up a sandbox device, tampers with what the backup stored and restores it.
class HostileSessionProgramTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "restores change owners: run as root";
        ASSERT_TRUE(device_.turnOnScans());
        const auto backup = device_.run("backup --yes --title Trusted");
        ASSERT_EQ(backup.status, 0) << backup.errors;
    }

    test::ProgramOutcome restore() const { return device_.run("--verbose restore --yes"); }

    std::string historyFile() const {
        for (const auto& entry : fs::directory_iterator(device_.path(kStorageFolder))) {
            if (entry.path().extension() == ".stowhvn") return entry.path().string();
        }
        ADD_FAILURE() << "no session stored";
        return {};
    }
    std::string sessionFolder() const { return fs::path(historyFile()).replace_extension().string(); }

    // A file of the staging folder, with the folders above it.
    void stage(const std::string& path, const std::string& bytes = "x") const {
        fs::create_directories((staging_.path() / path).parent_path());
        FileManager::writeFile((staging_.path() / path).string(), bytes);
    }
    void stageLink(const std::string& path, const std::string& target) const {
        fs::create_directories((staging_.path() / path).parent_path());
        fs::create_symlink(target, staging_.path() / path);
    }

    // A tar of the staging folder made by TAR_ARGUMENTS, as one more command line runs it.
    std::string makeTar(const std::string& name, const std::string& tarArguments) const {
        const std::string archive = work_ / name;
        test::runCommand("cd " + ShellQuote::path(staging_.path().string()) + " && tar -cf " +
                         ShellQuote::path(archive) + " " + tarArguments);
        return archive;
    }

    // ARCHIVE stands as the kind's only part.
    void storeKind(const std::string& kind, const std::string& archive) const {
        const std::string folder = sessionFolder() + "/" + kind;
        fs::remove_all(folder);
        fs::create_directories(folder);
        fs::copy_file(archive, folder + "/" + kind + "-000");
        FileManager::writeFile(sessionFolder() + "/" + kind + ".idx", kind + "-000\n");
    }

    test::TestFolder work_;
    test::TestFolder staging_;
    const test::SandboxDevice device_{"minimal"};
};

// Names as a crafted archive carries them: under another kind's folder, beside the kind's
// folder with the same beginning, climbing out, absolute, and a link that leads out; the
// archive is plain but starts like bzip2, so that a guess by its first bytes checks nothing.
TEST_F(HostileSessionProgramTest, NamesThatLeaveTheKindsFolderStayInTheArchive) {
    fs::create_directories(staging_.path() / "BZhA");
    stage("var/mobile/Library/Notes/notes.sqlite", "my notes");
    stage("var/mobile/Library/Preferences/planted.plist", "not a note");
    stage("var/mobile/Library/NotesEvil/b.txt", "beside the notes");
    stage("outside.txt", "above the device");
    stageLink("var/mobile/Library/Notes/up", "../../../..");
    const std::string archive = makeTar("names.tar",
                                        "BZhA var/mobile/Library/Notes/notes.sqlite var/mobile/Library/Notes/up "
                                        "var/mobile/Library/Preferences/planted.plist "
                                        "var/mobile/Library/NotesEvil/b.txt");
    for (const char* transform : {"s,^,var/mobile/Library/Notes/../../../../,", "s,^,/,"}) {
        test::runCommand("cd " + ShellQuote::path(staging_.path().string()) + " && tar -rf " +
                         ShellQuote::path(archive) + " -P --transform='" + transform + "' outside.txt");
    }
    storeKind("NOTES", archive);

    const auto outcome = restore();

    EXPECT_EQ(FileManager::contentsOfFile(device_.path("/var/mobile/Library/Notes/notes.sqlite")), "my notes");
    EXPECT_FALSE(fs::exists(fs::symlink_status(device_.path("/var/mobile/Library/Notes/up"))));
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/Preferences/planted.plist")));
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/NotesEvil")));
    EXPECT_FALSE(fs::exists(device_.path("/outside.txt")));
    EXPECT_FALSE(fs::exists(device_.path("/BZhA")));
    EXPECT_NE(outcome.errors.find("Refusing <var/mobile/Library/Preferences/planted.plist>"), std::string::npos)
        << outcome.errors;
    EXPECT_NE(outcome.errors.find("Refusing <var/mobile/Library/Notes/up>"), std::string::npos) << outcome.errors;
}

TEST_F(HostileSessionProgramTest, ALinkChainSpreadOverTwoArchivesLeadsNowhereOutside) {
    // "s" leads to its own folder, so "e" really climbs four folders from DCIM, to the
    // device's etc, while its text seems to stay within; the videos, restored after the
    // photos into the same folder, would write through it.
    stageLink("var/mobile/Media/DCIM/s", ".");
    stageLink("var/mobile/Media/DCIM/e", "s/s/s/s/../../../../etc");
    storeKind("PHOTOS", makeTar("photos.tar", "var/mobile/Media/DCIM/s var/mobile/Media/DCIM/e"));
    fs::remove_all(staging_.path() / "var");
    stage("var/mobile/Media/DCIM/e/planted", "through the link");
    storeKind("VIDEOS", makeTar("videos.tar", "var/mobile/Media/DCIM/e/planted"));

    const auto outcome = restore();

    EXPECT_FALSE(fs::exists(device_.path("/etc/planted")));
    EXPECT_FALSE(fs::is_symlink(device_.path("/var/mobile/Media/DCIM/e")));
    EXPECT_NE(outcome.errors.find("Refusing <var/mobile/Media/DCIM/e> of"), std::string::npos) << outcome.errors;
}

TEST_F(HostileSessionProgramTest, AHardLinkToAFileOutsideIsNeitherMadeNorGivenToMobile) {
    const std::string victim = device_.path("/etc/victim");
    FileManager::writeFile(victim, "root's own", nullptr, 0600);
    stage("etc/victim");
    stage("var/mobile/Library/Notes/kept.txt", "my note");
    const std::string archive = makeTar("hardlink.tar", "etc/victim var/mobile/Library/Notes/kept.txt");
    // The link is stored after its target, which then goes: the link points out of the archive.
    fs::create_hard_link(staging_.path() / "etc/victim", staging_.path() / "var/mobile/Library/Notes/h");
    test::runCommand("cd " + ShellQuote::path(staging_.path().string()) + " && tar -rf " + ShellQuote::path(archive) +
                     " etc/victim var/mobile/Library/Notes/h && tar --delete -f " + ShellQuote::path(archive) +
                     " etc/victim");
    storeKind("NOTES", archive);

    const auto outcome = restore();

    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/Notes/h")));
    EXPECT_EQ(ownershipOf(victim).owner, 0U);
    EXPECT_EQ(FileManager::contentsOfFile(device_.path("/var/mobile/Library/Notes/kept.txt")), "my note");
    EXPECT_NE(outcome.errors.find("Refusing <var/mobile/Library/Notes/h>"), std::string::npos) << outcome.errors;
}

TEST_F(HostileSessionProgramTest, AFolderPlacedBySessionOutsideItsKindIsNeitherUnpackedNorGivenAway) {
    const std::string victim = device_.path("/tmp/victim");
    fs::create_directories(victim);
    FileManager::writeFile(victim + "/file", "root's own");
    const std::string handedIn = work_ / "crafted.stowhvn";
    {
        // The session rewritten by hand: two folders of known kinds that claim the device's
        // root and a folder of root's.
        test::SupervisorScope scope(device_.root());
        const auto text = FileManager::contentsOfFile(historyFile());
        ASSERT_TRUE(text);
        const auto root = HistoryText::decode(*text, modelClasses());
        ASSERT_TRUE(root);
        auto sessions = SessionHistory::sessionsOf(*root);
        ASSERT_EQ(sessions.size(), 1U);
        BackupSession::FolderList folders;
        for (const char* place : {"/", "/tmp/victim"}) {
            const auto& row = ArchivableFolderTable::rows()[folders.size()];
            auto folder =
                std::make_shared<ArchivableFolder>(row.name, std::nullopt, row.type, place, false, false, false);
            folder->setExists(true);
            folders.push_back(folder);
        }
        sessions[0]->setArchivableFolders(folders);
        const auto crafted = HistoryText::encode(ArchiveValue(sessions[0]));
        ASSERT_TRUE(crafted);
        ASSERT_TRUE(FileManager::writeFile(historyFile(), *crafted));
        ASSERT_TRUE(FileManager::writeFile(handedIn, *crafted));
    }
    const auto expectNothingGivenAway = [&] {
        EXPECT_EQ(ownershipOf(device_.root()).owner, 0U);
        EXPECT_EQ(ownershipOf(victim).owner, 0U);
        EXPECT_EQ(ownershipOf(victim + "/file").owner, 0U);
    };

    // Found on the storage, where the restore takes every folder the session holds.
    const auto outcome = restore();
    expectNothingGivenAway();
    EXPECT_NE(outcome.errors.find("the session places it at </>"), std::string::npos) << outcome.errors;
    EXPECT_NE(outcome.errors.find("the session places it at </tmp/victim>"), std::string::npos);

    // Handed in as another application hands a file, and restored from the main screen.
    test::TerminalProgram terminal("--root " + ShellQuote::path(device_.root()) + " --verbose open --yes " +
                                   ShellQuote::path(handedIn));
    ASSERT_TRUE(terminal.waitFor("0) Quit")) << terminal.screen();
    terminal.type("1\n");
    ASSERT_TRUE(terminal.waitFor("1) Dismiss")) << terminal.screen();
    terminal.type("1\n");
    ASSERT_TRUE(terminal.waitFor("0) Quit", 2)) << terminal.screen();
    terminal.type("0\n");
    EXPECT_EQ(terminal.finish(), 0) << terminal.screen();
    EXPECT_NE(terminal.screen().find("Imported: Trusted [IMPORTED DATA]!"), std::string::npos);
    expectNothingGivenAway();
}

TEST_F(HostileSessionProgramTest, AStoredSetUserIdFileComesBackAsAPlainFileOfThePlacesOwner) {
    // The place belongs to the account of the telephony, as on a device.
    const std::string place = device_.path("/var/wireless/Library/CallHistory");
    fs::create_directories(place);
    test::runCommand("chown 25:25 " + ShellQuote::path(place));
    stage("var/wireless/Library/CallHistory/call_history.db", "calls");
    fs::permissions(staging_.path() / "var/wireless/Library/CallHistory/call_history.db",
                    fs::perms::owner_all | fs::perms::set_uid | fs::perms::set_gid | fs::perms::others_exec);
    test::runCommand("chown " + std::to_string(kStranger) + " " +
                     ShellQuote::path(staging_.path().string() + "/var/wireless/Library/CallHistory/call_history.db"));
    storeKind("PHONE", makeTar("phone.tar", "var/wireless/Library/CallHistory/call_history.db"));

    restore();

    const Ownership restored = ownershipOf(place + "/call_history.db");
    EXPECT_TRUE(FileManager::contentsOfFile(place + "/call_history.db") == "calls");
    EXPECT_EQ(restored.mode & 07000U, 0U) << "no set-user, set-group or sticky bit";
    EXPECT_EQ(restored.owner, 25U);
}

TEST_F(HostileSessionProgramTest, AListingCutShortByAFullTemporaryFolderUnpacksNothing) {
    // The first member fills the plain copy of the bzip2 archive exactly up to what the
    // temporary folder can hold: the copy ends between two members, as a whole archive would.
    const std::string temporary = device_.path("/var/tmp/stowhaven");
    fs::create_directories(temporary);
    if (std::system(("mount -t tmpfs -o size=304k,mode=0700 tmpfs " + ShellQuote::path(temporary)).c_str()) != 0) {
        GTEST_SKIP() << "no tmpfs can be mounted here";
    }
    stage("var/mobile/Library/Notes/a", std::string(300 * 1024 - 512, 'a'));
    stage("etc/planted", "not a note");
    const std::string archive = makeTar("full.tar", "var/mobile/Library/Notes/a etc/planted");
    test::runCommand("bzip2 " + ShellQuote::path(archive));
    storeKind("NOTES", archive + ".bz2");

    const auto outcome = restore();
    std::system(("umount -l " + ShellQuote::path(temporary)).c_str());

    EXPECT_FALSE(fs::exists(device_.path("/etc/planted")));
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/Notes/a")));
    EXPECT_NE(outcome.errors.find("where its listing holds 1. Nothing is restored from it"), std::string::npos)
        << outcome.errors;
}

}  // namespace
}  // namespace stowhaven
