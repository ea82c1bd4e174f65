// Sessions made of the device's selection, stored on local storage and rolled over.

#include "core/ModelClasses.h"
#include "core/Text.h"
#include "items/PhotoVideoManager.h"
#include "support/CatalogueFixture.h"

#include <vector>

namespace stowhaven {
namespace {

constexpr double kDay = 700000000;

class SessionStoreTest : public test::CatalogueFixture {
protected:
    SessionStoreTest() {
        for (const char* name : {"BACKUP_SUCCEEDED", "BACKUP_FAILED"}) {
            observers_.push_back(NotificationCenter::defaultCenter().addObserver(
                name, nullptr, [this](const Notification& notice) { outcomes_.push_back(notice.name); }));
        }
    }
    ~SessionStoreTest() override {
        for (const auto token : observers_) NotificationCenter::defaultCenter().removeObserver(token);
    }

    // Five sessions an hour apart on the storage, all of them read into the catalogue.
    std::vector<std::string> loadFiveSessions() {
        std::vector<std::string> names;
        for (int hour = 0; hour < 5; ++hour) names.push_back(store(sessionOf(kDay + hour * 3600, "")));
        manager().loadPackages();
        engine_->retrieveRestOfBackupHistory();
        return names;
    }

    static std::shared_ptr<BackupSession> readBack(const std::string& name) {
        const auto text = FileManager::contentsOfFile(localStoragePath() + "/" + name);
        const auto root = text ? HistoryText::decode(*text, modelClasses()) : std::nullopt;
        return root ? root->object<BackupSession>() : nullptr;
    }

    std::vector<std::string> outcomes_;

private:
    std::vector<NotificationCenter::ObserverToken> observers_;
};

TEST_F(SessionStoreTest, AHistoryFileWhoseNameGivesNoDateStaysAndCountsAgainstTheRollover) {
    FileManager::writeFile(localStoragePath() + "/0000-notes.stowhvn", "kept by hand");
    const auto names = loadFiveSessions();
    scope_.supervisor().setMaximumBackupToKeep(3);
    manager().rolloverBackups();
    EXPECT_TRUE(isStored("0000-notes.stowhvn"));
    EXPECT_FALSE(isStored(names[0]) || isStored(names[1]));
    EXPECT_TRUE(isStored(names[2]));
    EXPECT_EQ(manager().backupSessions().size(), 3u);
}

TEST_F(SessionStoreTest, ABackupOfPackagesAloneEndsWithItsHistoryFile) {
    manager().loadPackages();
    for (const auto& file : manager().currentPreferencesFiles()) file->setSelected(false);
    for (const StockDataSet set : kStockDataSets) manager().setHasData(set, false);
    manager().setBackupTitle("Before the upgrade");
    const auto session = manager().createBackupSession(true);
    manager().storeBackupData();

    EXPECT_EQ(outcomes_, std::vector<std::string>{"BACKUP_SUCCEEDED"});
    const std::string stamp = StorageLayout::stamp(*session->sessionDate());
    EXPECT_FALSE(FileManager::fileExists(localStoragePath() + "/" + stamp)) << "no bulk data, no dated folder";
    const auto stored = readBack(stamp + ".stowhvn");
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->title(), "Before the upgrade");
    EXPECT_EQ(stored->nbPackages(), 4);
    EXPECT_EQ(textutil::split(stored->rawData().value_or(""), '\n').size(), 5u) << "four lines and the last break";
    EXPECT_FALSE(manager().backupTitle()) << "a title serves one backup";
}

// The tests' clock stands still: both backups are made in the same second.
TEST_F(SessionStoreTest, TwoBackupsInOneSecondAreBothKeptUnderStampsASecondApart) {
    manager().loadPackages();
    std::vector<std::shared_ptr<BackupSession>> sessions;
    for (const char* title : {"First", "Second"}) {
        manager().setBackupTitle(title);
        sessions.push_back(manager().createBackupSession(true));
        manager().storeBackupData();
    }

    EXPECT_EQ(sessions[1]->sessionDate()->timeIntervalSinceDate(*sessions[0]->sessionDate()), 1.0);
    for (const auto& session : sessions) {
        const auto stored = readBack(StorageLayout::historyFileName(*session->sessionDate()));
        ASSERT_TRUE(stored);
        EXPECT_EQ(stored->title(), session->title());
    }
    EXPECT_EQ(engine_->existingFiles().size(), 2u);
}

TEST_F(SessionStoreTest, ABackupTakesTheAlbumsWhosePhotosAreChosen) {
    auto holidays = std::make_shared<PhotoVideoAlbum>("Holidays");
    holidays->setPhotos({"IMG_0001.JPG", "IMG_0002.JPG"});
    holidays->setPhotoSize(4.5);
    holidays->setPhotoSelected(true);
    auto work = std::make_shared<PhotoVideoAlbum>("Work");
    work->setVideos({"IMG_0003.MOV"});
    work->setVideoSize(30);
    PhotoVideoManager::shared().setPhotoVideoAlbums({holidays, work}, true);
    gAutoScanStockAppsEnabled = true;
    gAutoScanPhotosEnabled = true;
    gAutoScanVideosEnabled = true;

    manager().loadPackages();
    EXPECT_EQ(manager().countAppleStockApps(), 1) << "the chosen photos; the device has no other data";
    const auto session = manager().createBackupSession(true);
    PhotoVideoManager::shared().setPhotoVideoAlbums({}, false);

    EXPECT_TRUE(session->hasPhotosData());
    EXPECT_EQ(session->photosDataSize(), 4.5);
    EXPECT_FALSE(session->hasVideosData());
    ASSERT_TRUE(session->photoVideoAlbums());
    ASSERT_EQ(session->photoVideoAlbums()->size(), 1u);
    EXPECT_EQ(session->photoVideoAlbums()->front()->name(), "Holidays");
}

}  // namespace
}  // namespace stowhaven
