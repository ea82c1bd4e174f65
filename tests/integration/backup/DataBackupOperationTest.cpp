// The data operations of a backup on a sandbox device, with the real tar, split and openssl:
// how a kind's folder becomes parts of the part size listed in an index, which sets are
// skipped, how a cancel and a failure end one kind and not the next, and what the parts hold,
// the camera roll's among them. (The program's own round trip covers the other kinds.)

#include "archive/BuiltInCipherKey.h"
#include "backup/BackupOperation.h"
#include "backup/PreferenceFilesBackupOperation.h"
#include "backup/StockDataBackupOperations.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolders.h"
#include "items/DeviceItems.h"
#include "items/PhotoVideoAlbum.h"
#include "items/PhotoVideoManager.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "platform/Strings.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/NullStorageEngine.h"
#include "support/OperationRun.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"
#include "support/TestFolder.h"
#include "support/TextLines.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <any>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMegaByte = 1048576;
const Date kSessionDate(760000000.0);

std::vector<std::string> partNames(const std::string& kind, std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t index = 0; index < count; ++index) names.push_back(fmt::format("{}-{:03}", kind, index));
    return names;
}

// Bytes that differ from one position to the next.
std::string contentOfSize(std::uint64_t size) {
    std::string bytes(size, '\0');
    for (std::uint64_t index = 0; index < size; ++index)
        bytes[index] = static_cast<char>((index * 31 + index / 251) % 256);
    return bytes;
}

class DataBackupOperationTest : public ::testing::Test {
protected:
    explicit DataBackupOperationTest(const std::string& description = "minimal")
        : device_(description), scope_(device_.root()) {
        // The Supervisor's own start-up lines are only recorded; the operations' lines run.
        scope_.supervisor();
        scope_.services.shell.runsCommands = true;
        LocalStorageHelper::settleStoragePath();
        local_ = LocalStorageHelper::createLocalStorageHelper();
        scope_.supervisor().setCurrentStorageType(StorageType::Local);
    }

    // The newest session, dated kSessionDate, taking the sets given.
    static std::shared_ptr<BackupSession> startSession(std::initializer_list<StockDataSet> sets) {
        auto session = std::make_shared<BackupSession>();
        session->setSessionDate(kSessionDate);
        for (StockDataSet set : sets) session->setHasData(set, true);
        CydiaFileManager::shared().processBackupData({session}, false);
        return session;
    }

    static void setPartSize(std::int64_t megaBytes) {
        Supervisor::shared().lowLevelStorePreferencesData(PlistValue(megaBytes), "SplitSizeInMegaBytes");
    }

    void writeDeviceFile(const std::string& devicePath, const std::string& bytes) const {
        fs::create_directories(fs::path(device_.path(devicePath)).parent_path());
        ASSERT_TRUE(FileManager::writeFile(device_.path(devicePath), bytes));
    }

    static std::string sessionDirectory() { return localStoragePath() + "/" + StorageLayout::stamp(kSessionDate); }

    // The index of a kind as stored, a line per part.
    static std::vector<std::string> storedIndex(const std::string& kind) {
        const auto index = FileManager::contentsOfFile(sessionDirectory() + "/" + kind + ".idx");
        EXPECT_TRUE(index) << "no index of " << kind;
        return index ? test::linesOf(*index) : std::vector<std::string>{};
    }

    // The stored parts of a kind, in the order of its index, joined into a file of the test's own.
    std::string joinedParts(const std::string& kind) const {
        const std::string joined = work_ / (kind + ".joined");
        std::ofstream out(joined, std::ios::binary);
        for (const std::string& part : storedIndex(kind)) {
            out << FileManager::contentsOfFile(sessionDirectory() + "/" + kind + "/" + part).value_or("");
        }
        return joined;
    }

    static std::vector<std::string> membersOf(const std::string& archive) {
        return test::linesOf(test::runCommand("tar -tf " + ShellQuote::path(archive)));
    }

    test::SandboxDevice device_;
    test::SupervisorScope scope_;
    std::shared_ptr<LocalStorageHelper> local_;
    test::TestFolder work_;
};

TEST_F(DataBackupOperationTest, PartsHaveThePartSizeButTheLastAndTheIndexListsEachPartOnce) {
    setPartSize(1);
    // Notes whose archive is exactly five parts long, and a calendar two and a bit parts
    // long. A plain tar is made of 10240-byte records, so five megabytes is the least whole
    // number of parts it can fill: here a block for the folder, one for the file's header,
    // the file and two closing blocks.
    writeDeviceFile("/var/mobile/Library/Notes/notes.sqlite", contentOfSize(5 * kMegaByte - 4 * 512));
    writeDeviceFile("/var/mobile/Library/Calendar/Calendar.sqlitedb", contentOfSize(2 * kMegaByte + 300000));
    startSession({StockDataSet::Notes, StockDataSet::Calendar});

    NotesBackupOperation notes;
    CalendarBackupOperation calendar;
    notes.start();
    calendar.start();
    EXPECT_EQ(notes.operationResult(), 0);
    EXPECT_EQ(calendar.operationResult(), 0);

    const std::vector<std::string> notesParts = storedIndex("NOTES");
    std::uint64_t notesSize = 0;
    for (const std::string& part : notesParts)
        notesSize += FileManager::sizeOfItem(sessionDirectory() + "/NOTES/" + part);
    ASSERT_EQ(notesSize, 5 * kMegaByte) << "the notes were meant to fill five parts";
    EXPECT_EQ(notesParts, partNames("NOTES", 5)) << "no empty sixth part";
    EXPECT_EQ(FileManager::contentsOfDirectory(sessionDirectory() + "/NOTES"), notesParts);

    const std::vector<std::string> calendarParts = storedIndex("CALENDAR");
    ASSERT_EQ(calendarParts, partNames("CALENDAR", 3));
    const std::uint64_t last = FileManager::sizeOfItem(sessionDirectory() + "/CALENDAR/CALENDAR-002");
    EXPECT_GT(last, 300000u);
    EXPECT_LT(last, kMegaByte);

    // Joined, the parts are the archive, whose members are named as on the device itself.
    EXPECT_EQ(membersOf(joinedParts("NOTES")),
              (std::vector<std::string>{"var/mobile/Library/Notes/", "var/mobile/Library/Notes/notes.sqlite"}));
}

// An engine that keeps what it is sent, read as a network engine reads it: from the file
// opened when the upload starts. It may act on the Supervisor while a part is on its way.
class KeepingEngine final : public test::NullStorageEngine {
public:
    explicit KeepingEngine(std::string folder) : folder_(std::move(folder)) {}

    void createDirectory(const std::string& directory, Date) override { directories.push_back(directory); }
    void uploadFile(const std::string& path, Date, const std::optional<std::string>& directory) override {
        std::ifstream in(path, std::ios::binary);
        const std::string name = fs::path(path).filename().string();
        if (directory && whileSending) whileSending(name);
        uploads.push_back(name);
        std::ofstream(folder_ + "/" + name, std::ios::binary) << in.rdbuf();
    }
    std::uint64_t sizeSent(const std::string& name) const { return FileManager::sizeOfItem(folder_ + "/" + name); }

    std::vector<std::string> directories;
    std::vector<std::string> uploads;
    std::function<void(const std::string& part)> whileSending;

private:
    std::string folder_;
};

TEST_F(DataBackupOperationTest, ACancelWhileAPartIsSentLetsThatPartArriveWholeAndSendsNoOther) {
    setPartSize(1);
    writeDeviceFile("/var/mobile/Library/Notes/notes.sqlite", contentOfSize(2 * kMegaByte + 300000));
    auto engine = std::make_shared<KeepingEngine>(work_.path().string());
    StorageEngines::registerFactory(StorageType::Box, [engine] { return engine; });
    StorageEngines::create(StorageType::Box);
    scope_.supervisor().setCurrentStorageType(StorageType::Box);
    engine->whileSending = [](const std::string& part) {
        if (part == "NOTES-000") Supervisor::shared().handleProgressCanceled();
    };
    startSession({StockDataSet::Notes});

    NotesBackupOperation notes;
    notes.start();

    EXPECT_EQ(notes.operationResult(), 1);
    EXPECT_EQ(engine->directories, std::vector<std::string>{"NOTES"});
    EXPECT_EQ(engine->uploads, (std::vector<std::string>{"NOTES.idx", "NOTES-000"}));
    EXPECT_EQ(engine->sizeSent("NOTES-000"), kMegaByte);
}

// A set the session leaves out and a set whose folder is gone leave nothing on the storage,
// and the kind after them is still stored.
TEST_F(DataBackupOperationTest, ASetLeftOutOrWithoutItsFolderStoresNothingAndTheNextKindIsStillStored) {
    FileManager::removeItem(device_.path("/var/mobile/Library/Notes"));
    writeDeviceFile("/var/mobile/Library/SMS/sms.db", "messages");
    writeDeviceFile("/var/mobile/Library/Safari/Bookmarks.db", "bookmarks");
    startSession({StockDataSet::Notes, StockDataSet::Safari});
    MessagesBackupOperation messages;
    NotesBackupOperation notes;
    SafariBackupOperation safari;

    messages.start();
    notes.start();
    safari.start();

    EXPECT_EQ(messages.operationResult(), 0);
    EXPECT_FALSE(FileManager::fileExists(sessionDirectory() + "/CHAT"));
    EXPECT_FALSE(FileManager::fileExists(sessionDirectory() + "/CHAT.idx"));
    EXPECT_EQ(notes.operationResult(), 1);
    EXPECT_FALSE(FileManager::fileExists(sessionDirectory() + "/NOTES.idx"));
    EXPECT_FALSE(FileManager::fileExists(sessionDirectory() + "/NOTES/NOTES-000")) << "no empty archive stands in";
    EXPECT_EQ(safari.operationResult(), 0);
    EXPECT_EQ(membersOf(joinedParts("SAFARI")),
              (std::vector<std::string>{"var/mobile/Library/Safari/", "var/mobile/Library/Safari/Bookmarks.db"}));
}

TEST_F(DataBackupOperationTest, WithEncryptionOnThePartsOpenWithTheBuiltInPassPhrase) {
    setPartSize(1);
    const std::string notesBytes = contentOfSize(kMegaByte + 200000);
    writeDeviceFile("/var/mobile/Library/Notes/notes.sqlite", notesBytes);
    startSession({StockDataSet::Notes})->setEncryptionKey(CydiaFileManager::encrypt("correct horse"));

    gEncryptBackupEnabled = true;
    NotesBackupOperation notes;
    notes.start();
    gEncryptBackupEnabled = false;

    ASSERT_GT(storedIndex("NOTES").size(), 1u);
    const std::string enciphered = joinedParts("NOTES");
    const std::string deciphered = work_ / "notes.tar";
    test::runCommand("openssl enc -d -a -salt -aes-256-cbc -in " + ShellQuote::path(enciphered) + " -out " +
                     ShellQuote::path(deciphered) + " -k '" + std::string(BuiltInCipherKey::kKeyHex) + "' 2>/dev/null");
    const std::string unpacked = work_ / "unpacked";
    fs::create_directories(unpacked);
    test::runCommand("tar -xf " + ShellQuote::path(deciphered) + " -C " + ShellQuote::path(unpacked));
    EXPECT_EQ(FileManager::contentsOfFile(unpacked + "/var/mobile/Library/Notes/notes.sqlite"), notesBytes);
}

// An engine that refuses to store a history file and notes what it is asked to delete.
class RefusingEngine final : public test::NullStorageEngine {
public:
    std::optional<std::string> errorMessage() const override { return "The storage is full"; }
    void deleteBackupSession(const std::shared_ptr<BackupSession>& session) override { deleted.push_back(session); }
    std::vector<std::shared_ptr<BackupSession>> deleted;
};

// The refused record of a whole backup goes from the catalogue and from the storage, but the
// backup before it stays, however many times the closing runs.
TEST_F(DataBackupOperationTest, AFailedBackupOnTheDefaultStorageTakesOnlyItsOwnRecordAway) {
    std::vector<std::string> texts;
    const auto observer = NotificationCenter::defaultCenter().addObserver(
        "UPDATE_PROGRESS_TEXT", nullptr, [&texts](const Notification& notice) {
            if (const auto* text = std::any_cast<std::string>(&notice.object)) texts.push_back(*text);
        });
    const auto engine = std::make_shared<RefusingEngine>();
    StorageEngines::registerFactory(StorageType::Local, [engine] { return engine; });
    StorageEngines::create(StorageType::Local);
    scope_.supervisor().setStorageToLocal();
    gAutoScanPkgEnabled = true;
    gAutoScanStockAppsEnabled = true;
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.loadPackages();
    scope_.services.clock.time = std::chrono::system_clock::from_time_t(1795000000);
    auto earlier = std::make_shared<BackupSession>();
    earlier->setSessionDate(Date(700000000));
    catalogue.processBackupData({earlier}, false);

    runOperation(std::make_shared<BackupOperation>());
    // A second failure notice, as an engine may post, reaches the same run.
    NotificationCenter::defaultCenter().post("BACKUP_FAILED");
    scope_.serveMainQueue();
    NotificationCenter::defaultCenter().removeObserver(observer);

    ASSERT_EQ(catalogue.backupSessions().size(), 1U);
    EXPECT_EQ(catalogue.backupSessions().front(), earlier);
    ASSERT_EQ(engine->deleted.size(), 1U);
    EXPECT_NE(engine->deleted.front(), earlier);
    EXPECT_NE(std::find(texts.begin(), texts.end(), Strings::localized("CLOUD_UPLOAD_FAILED")), texts.end());
}

class DataBackupOnTheDemoDeviceTest : public DataBackupOperationTest {
protected:
    DataBackupOnTheDemoDeviceTest() : DataBackupOperationTest("demo") {}
};

TEST_F(DataBackupOnTheDemoDeviceTest, ThePackageManagersSettingsAreAlwaysKept) {
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.buildPreferencesData();
    // The user takes none of the preference files the package manager's settings don't
    // stand for.
    for (const auto& file : catalogue.currentPreferencesFiles()) {
        if (file->name() != DeviceItems::kCydiaPreferencesPath) file->setSelected(false);
    }
    catalogue.createBackupSession(true)->setSessionDate(kSessionDate);

    PreferencesFileBackupOperation preferences;
    preferences.start();

    EXPECT_EQ(preferences.operationResult(), 0);
    EXPECT_EQ(membersOf(joinedParts("PREFERENCES")),
              std::vector<std::string>{std::string(DeviceItems::kCydiaPreferencesPath).substr(1)});
}

// The camera roll's photos go with the library's own data, its videos alone, and no cache.
TEST_F(DataBackupOnTheDemoDeviceTest, TheChosenPhotosAndVideosEachTakeTheirOwnFilesOfTheCameraRoll) {
    auto album = std::make_shared<PhotoVideoAlbum>("Camera Roll");
    album->setPhotos({"IMG_0001.JPG"});
    album->setVideos({"IMG_0005.MOV"});
    album->setPhotoSelected(true);
    album->setVideoSelected(true);
    album->setPhotoSize(0.1);
    album->setVideoSize(0.1);
    album->setAllAccounted(true);
    PhotoVideoManager::shared().setPhotoVideoAlbums({album}, true);
    for (auto* flag :
         {&gAutoScanPkgEnabled, &gAutoScanStockAppsEnabled, &gAutoScanPhotosEnabled, &gAutoScanVideosEnabled}) {
        *flag = true;
    }
    scope_.services.clock.time = kSessionDate.timePoint();
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.loadPackages();
    ArchivableFolders::resetFolder();

    runOperation(std::make_shared<BackupOperation>());
    PhotoVideoManager::shared().setPhotoVideoAlbums({}, false);

    ASSERT_TRUE(catalogue.hasSuccessfullySaveData());
    const auto photos = membersOf(joinedParts("PHOTOS"));
    const auto videos = membersOf(joinedParts("VIDEOS"));
    const auto holds = [](const std::vector<std::string>& members, const std::string& member) {
        return std::find(members.begin(), members.end(), member) != members.end();
    };
    EXPECT_TRUE(holds(photos, "var/mobile/Media/DCIM/100APPLE/IMG_0001.JPG"));
    EXPECT_TRUE(holds(photos, "var/mobile/Media/PhotoData/Photos.sqlite"));
    EXPECT_TRUE(holds(videos, "var/mobile/Media/DCIM/100APPLE/IMG_0005.MOV"));
    for (const std::string& member : photos) {
        EXPECT_FALSE(member.ends_with(".MOV") || member.find("/Caches/") != std::string::npos) << member;
    }
    for (const std::string& member : videos) EXPECT_FALSE(member.ends_with(".JPG")) << member;
}

}  // namespace
}  // namespace stowhaven
