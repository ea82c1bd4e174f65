// Sessions made of the device's selection, stored on local storage and rolled over; and the
// load of the catalogue: the device's packages, the newest session that reads, the history
// behind it, and the comparison that says what a restore would bring back.

#include "core/ModelClasses.h"
#include "core/SessionHistory.h"
#include "core/Text.h"
#include "items/PhotoVideoManager.h"
#include "platform/Strings.h"
#include "support/CatalogueFixture.h"

#include <algorithm>
#include <vector>

namespace stowhaven {
namespace {

// 2023-03-07 about noon.
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

// The package lines that sessions hold.
constexpr const char* kOldSubstrate = "Substrate\tmobilesubstrate\t0.9.5000\tme\tDevelopment\tfirmware\n";
constexpr const char* kInstalledLoader = "PreferenceLoader\tpreferenceloader\t2.2.3\tme\tSystem\tmobilesubstrate\n";

double dateOf(const std::shared_ptr<BackupSession>& session) {
    return session->sessionDate()->timeIntervalSinceReferenceDate();
}

std::shared_ptr<CydiaFile> packageOf(const CydiaFileManager::Packages& packages, const std::string& identifier) {
    const auto found = std::find_if(packages.begin(), packages.end(),
                                    [&](const auto& package) { return package->packageName() == identifier; });
    return found == packages.end() ? nullptr : *found;
}

using SessionLoadingTest = test::CatalogueFixture;

TEST_F(SessionLoadingTest, ADamagedNewestHistoryIsSetAsideForTheOneBeforeIt) {
    const std::string oldest = store(sessionOf(kDay, kOldSubstrate));
    const std::string second = store(sessionOf(kDay + 3600, kInstalledLoader));
    const std::string newest = StorageLayout::historyFileName(Date(kDay + 7200));
    FileManager::writeFile(localStoragePath() + "/" + newest, "eJzLSM3JyVcozy/KSQEAGgQEXQ==");

    manager().loadPackages();

    ASSERT_TRUE(manager().currentBackupSession());
    EXPECT_EQ(dateOf(manager().currentBackupSession()), kDay + 3600);
    EXPECT_EQ(engine_->existingFiles(), (std::vector<std::string>{oldest, second}));
    EXPECT_TRUE(isStored(newest)) << "nothing on the storage is removed for being unreadable";
    EXPECT_FALSE(manager().errorMsg());
    EXPECT_EQ(loads_, 2) << "a file engine's load passes the comparison twice";
}

TEST_F(SessionLoadingTest, AHistoryDamagedThroughoutEndsTheLoadWithNoSession) {
    for (double hour : {0, 1, 2}) {
        FileManager::writeFile(localStoragePath() + "/" + StorageLayout::historyFileName(Date(kDay + hour * 3600)),
                               "not a history");
    }
    manager().loadPackages();
    EXPECT_FALSE(manager().currentBackupSession());
    EXPECT_TRUE(engine_->existingFiles().empty());
    EXPECT_EQ(manager().errorMsg(), Strings::localized("NO_PREVIOUS_BACKUP"));
    EXPECT_EQ(loads_, 2);
}

TEST_F(SessionLoadingTest, NoHistoryIsToldUnlessAnAutomaticBackupIsAboutToMakeOne) {
    manager().loadPackages();
    EXPECT_EQ(manager().errorMsg(), Strings::localized("NO_PREVIOUS_BACKUP"));
    const auto installed = manager().currentPackages();
    EXPECT_EQ(installed.size(), 4u) << "the system's own packages aren't the user's";
    EXPECT_TRUE(std::all_of(installed.begin(), installed.end(), [](const auto& p) { return p->isBackupSelected(); }));

    gAutobackupEnabled = true;
    manager().loadPackages();
    EXPECT_FALSE(manager().errorMsg());
}

TEST_F(SessionLoadingTest, TheRestoreOffersWhatTheDeviceLacksInThatVersion) {
    store(sessionOf(kDay, std::string(kOldSubstrate) + kInstalledLoader));
    manager().loadPackages();

    const auto offered = manager().oldPackages();
    ASSERT_EQ(offered.size(), 2u);
    const auto substrate = packageOf(offered, "mobilesubstrate");
    const auto loader = packageOf(offered, "preferenceloader");
    ASSERT_TRUE(substrate && loader);
    EXPECT_TRUE(substrate->isRestoreSelected()) << "installed, but in another version";
    EXPECT_FALSE(loader->isRestoreSelected());
    EXPECT_EQ(loader, packageOf(manager().currentPackages(), "preferenceloader")) << "one record per version";
    EXPECT_NE(substrate, packageOf(manager().currentPackages(), "mobilesubstrate"));
    EXPECT_EQ(manager().currentBackupSession()->nbPackages(), 2);
    EXPECT_EQ(manager().countRestorePackages(), 1u);
}

TEST_F(SessionLoadingTest, ASessionReadAgainWithinTheSameSecondIsKnownAlready) {
    store(sessionOf(kDay, kInstalledLoader));
    store(sessionOf(kDay + 60, kOldSubstrate));
    manager().loadPackages();
    ASSERT_EQ(manager().backupSessions().size(), 1u);

    engine_->retrieveRestOfBackupHistory();
    const auto sessions = manager().backupSessions();
    ASSERT_EQ(sessions.size(), 2u) << "the newest, read again with the rest, is added once";
    EXPECT_EQ(dateOf(sessions[0]), kDay);
    EXPECT_EQ(dateOf(sessions[1]), kDay + 60);

    manager().processBackupData({sessionOf(kDay + 60.4, "")}, false);
    EXPECT_EQ(manager().backupSessions().size(), 2u);
    manager().processBackupData({sessionOf(kDay + 61.5, "")}, false);
    EXPECT_EQ(manager().backupSessions().size(), 3u);
}

TEST_F(SessionLoadingTest, InterningGivesOneRecordPerIdentifierAndVersionWhateverTheCase) {
    const auto first = manager().createCydiaFileFrom("Tweak\tcom.example.tweak\t1.0-1\tme\tTweaks\tmobilesubstrate");
    const auto again = manager().createCydiaFileFrom("TWEAK\tCOM.Example.Tweak\t1.0-1\tyou\tOther\tfirmware");
    const auto other = manager().createCydiaFileFrom("Tweak\tcom.example.tweak\t1.0-2\tme\tTweaks\tmobilesubstrate");
    EXPECT_EQ(first, again);
    EXPECT_NE(first, other);
    EXPECT_FALSE(manager().createCydiaFileFrom(""));
    EXPECT_EQ(manager().allPackages().size(), 2u);
}

}  // namespace
}  // namespace stowhaven
