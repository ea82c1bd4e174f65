// Sessions damaged as storage and transfers damage them: a part gone, a part cut short,
// an archive enciphered under another key. The kind fails with its reason in the restore's
// log, nothing of it is unpacked, the rest of the restore goes on and the job ends with
// status 1.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";

class DamagedSessionProgramTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "restores change owners: run as root";
        ASSERT_TRUE(device_.turnOnScans());
        FileManager::writeFile(keyFile(), "correct horse\n");
    }

    std::string keyFile() const { return (work_.path() / "key").string(); }

    void backUp(const std::string& options) const {
        const auto backup = device_.run("backup --yes " + options);
        ASSERT_EQ(backup.status, 0) << backup.errors;
    }

    std::string kindFolder(const std::string& kind) const {
        for (const auto& entry : fs::directory_iterator(device_.path(kStorageFolder))) {
            if (entry.is_directory()) return (entry.path() / kind).string();
        }
        ADD_FAILURE() << "no session stored";
        return {};
    }

    // The device's copy goes, so that whatever the restore unpacks shows.
    void removeFromDevice(const std::string& folder) const { fs::remove_all(device_.path(folder)); }

    test::TestFolder work_;
    const test::SandboxDevice device_{"demo"};
};

TEST_F(DamagedSessionProgramTest, AKindWithAPartMissingOrCutShortIsNotUnpackedAndTheRestGoesOn) {
    backUp("");
    // The notes in three parts, the middle one lost; the calendar's only part cut in half.
    const std::string notes = kindFolder("NOTES");
    const auto size = fs::file_size(notes + "/NOTES-000");
    test::runCommand("cd " + ShellQuote::path(notes) + " && split -b " + std::to_string(size / 3 + 1) +
                     " -d -a 3 NOTES-000 part- && rm NOTES-000 part-001 && mv part-000 NOTES-000 && "
                     "mv part-002 NOTES-002 && printf 'NOTES-000\\nNOTES-001\\nNOTES-002\\n' > ../NOTES.idx");
    const std::string calendar = kindFolder("CALENDAR") + "/CALENDAR-000";
    fs::resize_file(calendar, fs::file_size(calendar) / 2);
    for (const char* folder :
         {"/var/mobile/Library/Notes", "/var/mobile/Library/Calendar", "/var/mobile/Library/Safari"}) {
        removeFromDevice(folder);
    }

    const auto restore = device_.run("restore --yes");

    EXPECT_EQ(restore.status, 1) << restore.output << restore.errors;
    EXPECT_NE(restore.output.find("failed             Notes data: its part <NOTES-001> couldn't be fetched"),
              std::string::npos)
        << restore.output;
    EXPECT_NE(restore.output.find("failed             Calendar data: its archive is damaged"), std::string::npos)
        << restore.output;
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/Notes")));
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/Calendar")));
    EXPECT_TRUE(fs::exists(device_.path("/var/mobile/Library/Safari"))) << "the kinds after them are restored";
    EXPECT_NE(device_.run("history").output.find("1 session(s)"), std::string::npos)
        << "a failed restore deletes nothing";
}

TEST_F(DamagedSessionProgramTest, AnArchiveEncipheredUnderAnotherKeyIsNotUnpacked) {
    ASSERT_EQ(device_.run("settings EncryptBackupEnabled true").status, 0);
    backUp("--key-file " + ShellQuote::path(keyFile()));
    const std::string notes = kindFolder("NOTES") + "/NOTES-000";
    const std::string plain = (work_.path() / "notes.tar").string();
    test::runCommand("tar -cf " + ShellQuote::path(plain) + " -C " + ShellQuote::path(device_.root()) +
                     " var/mobile/Library/Notes");
    test::runCommand("openssl enc -e -a -salt -aes-256-cbc -pbkdf2 -in " + ShellQuote::path(plain) +
                     " -k another -out " + ShellQuote::path(notes));
    removeFromDevice("/var/mobile/Library/Notes");
    removeFromDevice("/var/mobile/Library/Safari");

    const auto restore = device_.run("restore --yes --key-file " + ShellQuote::path(keyFile()));

    EXPECT_EQ(restore.status, 1) << restore.output << restore.errors;
    EXPECT_NE(restore.output.find("failed             Notes data: its archive couldn't be deciphered"),
              std::string::npos)
        << restore.output;
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/Notes")));
    EXPECT_TRUE(fs::exists(device_.path("/var/mobile/Library/Safari")));
}

}  // namespace
}  // namespace stowhaven
