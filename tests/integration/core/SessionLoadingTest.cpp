// The load of the catalogue: the device's packages, the newest session that reads, the
// history behind it, and the comparison that says what a restore would bring back.

#include "core/SessionHistory.h"
#include "platform/Strings.h"
#include "support/CatalogueFixture.h"

#include <algorithm>

namespace stowhaven {
namespace {

// 2023-03-07 about noon, and the package lines that sessions hold.
constexpr double kDay = 700000000;
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
