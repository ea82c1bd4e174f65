// The indexed data of a session fetched from local storage and unpacked into a sandbox
// device, with the real cat and tar, and what an archive crafted to write elsewhere gets.

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "platform/FileManager.h"
#include "restore/IndexedDataRestoreOperation.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/CatalogueFixture.h"
#include "support/TestFolder.h"
#include "support/CapturedLog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

const Date kSessionDate(760000000.0);

class IndexedDataRestoreTest : public test::CatalogueFixture {
protected:
    IndexedDataRestoreTest() {
        auto session = std::make_shared<BackupSession>();
        session->setSessionDate(kSessionDate);
        session->setHasData(StockDataSet::Notes, true);
        session->setHasData(StockDataSet::Safari, true);
        CydiaFileManager::shared().processBackupData({session}, false);
        CydiaFileManager::shared().changeCurrentBackupSessionTo(session);
    }

    // Stores a tar of the staging folder as the kind's single part, with its index: made by
    // the first arguments, then added to by each of the others, members named as tar's own
    // options make them.
    void storeKind(const std::string& kind, const std::vector<std::string>& tarArguments) const {
        const std::string session = localStoragePath() + "/" + StorageLayout::stamp(kSessionDate);
        fs::create_directories(session + "/" + kind);
        const std::string part = session + "/" + kind + "/" + kind + "-000";
        for (std::size_t index = 0; index < tarArguments.size(); ++index) {
            test::runCommand("cd '" + staging_.path().string() + "' && tar " + (index == 0 ? "-cf '" : "-rf '") + part +
                             "' " + tarArguments[index] + " 2>/dev/null");
        }
        FileManager::writeFile(session + "/" + kind + ".idx", kind + "-000\n");
    }

    void stage(const std::string& path, const std::string& bytes) const {
        fs::create_directories(fs::path(staging_.path() / path).parent_path());
        FileManager::writeFile((staging_.path() / path).string(), bytes);
    }

    test::TestFolder staging_;
};

TEST_F(IndexedDataRestoreTest, AKindsFilesComeBackAndWhatWouldLandElsewhereStaysInTheArchive) {
    stage("var/mobile/Library/Notes/notes.sqlite", "my notes");
    stage("var/mobile/Library/Preferences/planted.plist", "not a note");
    stage("var/mobile/Library/NotesEvil/b.txt", "beside the notes");
    stage("outside.txt", "above the device");
    fs::create_symlink("../../../..", staging_.path() / "var/mobile/Library/Notes/up");
    // Names as a crafted archive would carry them: one under another kind's folder, one
    // absolute, one climbing out, and a link that leads out of the notes.
    storeKind("NOTES", {"var/mobile/Library/Notes/notes.sqlite var/mobile/Library/Notes/up "
                        "var/mobile/Library/Preferences/planted.plist var/mobile/Library/NotesEvil/b.txt",
                        "-P --transform='s,^,var/mobile/Library/Notes/../../../../,' outside.txt",
                        "-P --transform='s,^,/,' outside.txt"});
    test::CapturedLog log;

    IndexedDataRestoreOperation().start();

    EXPECT_EQ(FileManager::contentsOfFile(device_.path("/var/mobile/Library/Notes/notes.sqlite")), "my notes");
    EXPECT_FALSE(fs::exists(fs::symlink_status(device_.path("/var/mobile/Library/Notes/up"))));
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/Preferences/planted.plist")));
    EXPECT_FALSE(fs::exists(device_.path("/var/mobile/Library/NotesEvil")));
    EXPECT_FALSE(fs::exists(device_.path("/outside.txt")));
    EXPECT_TRUE(log.contains("Refusing <var/mobile/Library/Notes/up>"));
    // A kind the session holds but the storage lacks is asked for and ends there.
    EXPECT_TRUE(log.contains("No <SAFARI> INDEX FILE found!"));
    EXPECT_TRUE(log.contains("\tSkipping <CALENDAR> data..."));
}

}  // namespace
}  // namespace stowhaven
