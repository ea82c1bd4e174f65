// "stowhaven backup" on a sandbox device with local storage, and what it leaves there.

#include "platform/FileManager.h"
#include "support/FolderSnapshot.h"
#include "support/SandboxDevice.h"
#include "support/SqlRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace stowhaven {
namespace {

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";
constexpr const char* kCalendarFolder = "/var/mobile/Library/Stowhaven/Calendar";

class BackupProgramTest : public ::testing::Test {
protected:
    BackupProgramTest() { EXPECT_TRUE(device_.turnOn({"AutoScanPkgEnabled", "AutoScanStockAppsEnabled"})); }

    std::vector<std::string> stored() const {
        return FileManager::contentsOfDirectory(device_.path(kStorageFolder)).value_or(std::vector<std::string>{});
    }

    const test::SandboxDevice device_{"minimal"};
};

TEST_F(BackupProgramTest, ABackupRunsOnlyWhenConfirmedAndEndsWithItsSession) {
    const auto unconfirmed = device_.run("backup");
    EXPECT_EQ(unconfirmed.status, 2);
    EXPECT_NE(unconfirmed.errors.find("--yes"), std::string::npos);
    EXPECT_TRUE(stored().empty());

    ASSERT_EQ(device_.run("settings iCalIntegrationEnabled true").status, 0);
    const auto outcome = device_.run("backup --yes --title 'Before the upgrade'");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("Backup done on local storage"), std::string::npos);
    // Away from a terminal the progress is a plain line per step.
    EXPECT_NE(outcome.errors.find("Done!\n"), std::string::npos) << outcome.errors;
    const auto names = stored();
    EXPECT_EQ(std::count_if(names.begin(), names.end(), [](const auto& name) { return name.ends_with(".stowhvn"); }),
              1);
    EXPECT_TRUE(std::filesystem::is_empty(device_.path("/var/tmp/stowhaven"))) << "no working file is left";

    const auto history = device_.run("history");
    EXPECT_NE(history.output.find("Before the upgrade"), std::string::npos) << history.output;

    // The job's end stands in the device's calendar, with the session's title.
    const auto events = FileManager::contentsOfDirectory(device_.path(kCalendarFolder));
    ASSERT_TRUE(events && events->size() == 1u);
    const auto event = FileManager::contentsOfFile(device_.path(kCalendarFolder) + "/" + events->front());
    EXPECT_NE(event.value_or("").find("SUMMARY:Stowhaven™: Backup [Before the upgrade]"), std::string::npos);
}

TEST_F(BackupProgramTest, AnEncryptedBackupNeedsItsKeyAndAFailedOneSaysWhy) {
    ASSERT_EQ(device_.run("settings EncryptBackupEnabled true").status, 0);
    const auto withoutKey = device_.run("backup --yes");
    EXPECT_EQ(withoutKey.status, 2);
    EXPECT_NE(withoutKey.errors.find("--key-file"), std::string::npos);
    ASSERT_EQ(device_.run("settings EncryptBackupEnabled false").status, 0);

    // The address book as storage, whose database refuses to make the record a member of
    // the program's group.
    const std::string book = device_.path("/var/mobile/Library/AddressBook");
    FileManager::createDirectory(book, true);
    test::sqlRows(book + "/AddressBook.sqlitedb",
                  "CREATE TABLE ABGroupMembers (UID INTEGER PRIMARY KEY, group_id INTEGER, "
                  "member_type INTEGER, member_id INTEGER, UNIQUE(group_id, member_type, member_id)); "
                  "CREATE TRIGGER refuse BEFORE INSERT ON ABGroupMembers "
                  "BEGIN SELECT RAISE(ABORT, 'read-only'); END;");
    ASSERT_EQ(device_.run("settings CurrentStorageType 0").status, 0);
    const auto outcome = device_.run("backup --yes");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.errors.find("the backup failed"), std::string::npos) << outcome.errors;
}

TEST_F(BackupProgramTest, HistoryFilesAndDataAreRootsAloneWhateverTheUmask) {
    ASSERT_EQ(device_.run("backup --yes", "umask 000; ").status, 0);
    const auto items = test::snapshot(device_.path(kStorageFolder));
    ASSERT_TRUE(std::any_of(items.begin(), items.end(), [](const auto& item) {
        return item.first.find('/') != std::string::npos && !item.second.starts_with("folder");
    })) << "some data lies in a data folder";
    for (const auto& [path, item] : items) {
        EXPECT_TRUE(item.starts_with(item.starts_with("folder") ? "folder 0700" : "0600 ")) << path;
    }
}

}  // namespace
}  // namespace stowhaven
