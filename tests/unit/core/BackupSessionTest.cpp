#include "core/BackupSession.h"
#include "core/CydiaFile.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/PreferenceFile.h"
#include "items/RepositorySource.h"
#include "platform/FileOwnership.h"
#include "platform/plist/PlistCodec.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <fstream>

namespace stowhaven {
namespace {

using Dictionary = PlistValue::Dictionary;

constexpr const char* kCydiaPlist = "/var/mobile/Library/Preferences/com.saurik.Cydia.plist";
constexpr const char* kTweakPlist = "/var/mobile/Library/Preferences/net.example.tweak.plist";
constexpr const char* kIconState = "/var/mobile/Library/SpringBoard/IconState.plist";

class BackupSessionTest : public ::testing::Test {
protected:
    void writeDeviceFile(const std::string& devicePath, const std::string& bytes) {
        scope_.makeFile(devicePath);
        std::ofstream(scope_.path(devicePath), std::ios::binary) << bytes;
    }

    std::shared_ptr<CydiaFile> package(const std::string& line, bool selected) {
        auto file = std::make_shared<CydiaFile>(line);
        file->setBackupSelected(selected);
        return file;
    }

    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
    BackupSession session_;
};

TEST_F(BackupSessionTest, OnlyPackagesSelectedForBackupGoIntoTheList) {
    EXPECT_FALSE(session_.addCydiaFile(nullptr));
    EXPECT_FALSE(session_.addCydiaFile(package("Zip\tzipper\t1\tme\tTools\t\tinstall ok installed", true)))
        << "a refused line has no identifier";
    EXPECT_FALSE(session_.addCydiaFile(package("Foo\tcom.foo\t1.0\tme\tTweaks\t\tinstall ok installed", false)));
    EXPECT_TRUE(session_.addCydiaFile(package("Foo\tcom.foo\t1.0\tme\tTweaks\ta, b\tinstall ok installed", true)));
    EXPECT_TRUE(session_.addCydiaFile(package("\tcom.bar\t2\tyou\tThemes\t\tinstall ok installed", true)));
    EXPECT_EQ(session_.rawData(), "Foo\tcom.foo\t1.0\tme\tTweaks\ta,b\ncom.bar\tcom.bar\t2\tyou\tThemes\t(null)\n");
}

TEST_F(BackupSessionTest, OnAFileEngineOnlyThePackageManagersSettingsStayInline) {
    writeDeviceFile(kCydiaPlist, "cydia settings");
    writeDeviceFile(kTweakPlist, "tweak settings");
    session_.addPreferenceFile(std::make_shared<PreferenceFile>(kCydiaPlist, ArchiveValue()));
    session_.addPreferenceFile(std::make_shared<PreferenceFile>(kTweakPlist, ArchiveValue()));

    EXPECT_EQ(*session_.preferencesData(), (BackupSession::FileData{{kCydiaPlist, PlistValue::data("cydia settings")},
                                                                    {kTweakPlist, PlistValue()}}));
    EXPECT_EQ(session_.preferencesFileObjects().size(), 2u);
    const PlistValue::Dictionary& permissions = *session_.permissionsData();
    ASSERT_TRUE(permissions.contains(kTweakPlist));
    const auto ownership = FileOwnership::read(scope_.path(kTweakPlist));
    const PlistValue::Dictionary& attributes = *permissions.at(kTweakPlist).asDictionary();
    EXPECT_EQ(attributes.at("NSFilePosixPermissions"), PlistValue(ownership->permissions));
    EXPECT_EQ(attributes.at("NSFileOwnerAccountName"), ownership->ownerAccountName);
    EXPECT_EQ(attributes.at("NSFileGroupOwnerAccountName"), ownership->ownerAccountName)
        << "the group is recorded as the owner's name";
}

TEST_F(BackupSessionTest, OnTheAddressBookEveryFileStaysInline) {
    supervisor_.setStorageToAddressbook();
    writeDeviceFile(kTweakPlist, "tweak settings");
    scope_.makeFile(kIconState);
    ASSERT_TRUE(
        PlistCodec::writeFile(scope_.path(kIconState), Dictionary{{"iconLists", 1}}, PlistFormat::Binary, 0644));
    session_.addPreferenceFile(std::make_shared<PreferenceFile>(kTweakPlist, ArchiveValue()));
    session_.addSpringboardFile(std::make_shared<PreferenceFile>(kIconState, ArchiveValue()));

    EXPECT_EQ(session_.preferencesData()->at(kTweakPlist), PlistValue::data("tweak settings"));
    EXPECT_EQ(session_.springBoardData()->at(kIconState), (Dictionary{{"iconLists", 1}}));
    EXPECT_EQ(session_.springboardDataObjects().size(), 1u);
}

TEST_F(BackupSessionTest, FilesThatCantBeReadOrAreThereAlreadyAddNothing) {
    writeDeviceFile(kTweakPlist, "tweak settings");
    writeDeviceFile(kIconState, "not a property list");
    session_.addPreferenceFile(std::make_shared<PreferenceFile>("/var/mobile/missing.plist", ArchiveValue()));
    session_.addPreferenceFile(std::make_shared<PreferenceFile>(kTweakPlist, ArchiveValue()));
    session_.addPreferenceFile(std::make_shared<PreferenceFile>(kTweakPlist, ArchiveValue()));
    session_.addPreferenceFile(nullptr);
    session_.addSpringboardFile(std::make_shared<PreferenceFile>(kIconState, ArchiveValue()));

    EXPECT_EQ(session_.preferencesData()->size(), 1u);
    EXPECT_EQ(session_.preferencesFileObjects().size(), 1u);
    EXPECT_TRUE(session_.springBoardData()->empty());
    EXPECT_TRUE(session_.springboardDataObjects().empty());
}

TEST_F(BackupSessionTest, SessionsBefore8AlwaysHoldPreferenceFiles) {
    session_.setVersion("7");
    EXPECT_TRUE(session_.hasPrefsFilesData());
    EXPECT_TRUE(session_.hasSpringboardFilesData());
    session_.setVersion("7.1");
    EXPECT_FALSE(session_.hasPrefsFilesData()) << "7.1 reads as 71";
    EXPECT_FALSE(session_.hasSpringboardFilesData());
}

TEST_F(BackupSessionTest, SourcesAreKeptOncePerLink) {
    const auto source = [](const char* uri, const char* distribution) {
        return std::make_shared<RepositorySource>(Dictionary{{"URI", uri}, {"Distribution", distribution}});
    };
    session_.addRepositorySource(source("http://a.example/", "./"));
    session_.addRepositorySource(source("http://a.example/", "stable"));
    session_.addRepositorySource(nullptr);
    session_.addRepositorySource(source("http://b.example/", "./"));
    ASSERT_EQ(session_.repositorySources()->size(), 2u);
    EXPECT_EQ(session_.repositorySources()->front()->distribution(), "./") << "the first one stays";
}

TEST_F(BackupSessionTest, SizesAddUpByTheirOwnRules) {
    for (const StockDataSet set : kStockDataSets) session_.setDataSize(set, 10);
    session_.setHasData(StockDataSet::Health, true);
    session_.setHasData(StockDataSet::Notes, true);
    EXPECT_EQ(session_.appleStockAppsSize(), 90) << "Health is left out";
    EXPECT_EQ(session_.countAppleStockApps(), 2);

    auto application = std::make_shared<Application>("App");
    // Both folders measured, so that the total stands as given.
    application->setTotalBytes(2 * 1048576.0);
    application->setDocumentsDirSize(0);
    application->setLibraryDirSize(0);
    session_.setApplications(BackupSession::ApplicationList{application});
    auto folder = std::make_shared<ArchivableFolder>("Flex", "com.example.flex", 21, "/var/mobile/Documents/Flex",
                                                     false, false, false);
    folder->setSize(3);
    session_.setArchivableFolders(BackupSession::FolderList{folder});
    EXPECT_EQ(session_.backupTotalSize(), 95);
}

TEST_F(BackupSessionTest, ApplicationsByIdentifierLeaveOutThoseWithout) {
    auto named = std::make_shared<Application>("Named");
    named->setBundleIdentifier("com.example.named");
    session_.setApplications(BackupSession::ApplicationList{named, std::make_shared<Application>("Anonymous")});
    const auto byIdentifier = session_.getApplicationsAsDictionary();
    ASSERT_EQ(byIdentifier.size(), 1u);
    EXPECT_EQ(byIdentifier.at("com.example.named"), named);
}

TEST_F(BackupSessionTest, AFolderCountsAsSelectedWhenItOrOneOfItsItemsIs) {
    auto themes = std::make_shared<ArchivableFolder>("Themes", std::nullopt, 6, "/Library/Themes/", false, true, false);
    themes->setExists(true);
    auto theme = std::make_shared<SelectableItem>("Dark.theme");
    theme->setSelected(false);
    themes->setContentItems({theme});
    session_.setArchivableFolders(BackupSession::FolderList{themes});
    EXPECT_FALSE(session_.hasAnyArchivableFolderSelected());
    theme->setSelected(true);
    EXPECT_TRUE(session_.hasAnyArchivableFolderSelected());
    themes->setExists(false);
    EXPECT_FALSE(themes->isSelected()) << "a place the device lacks";
    EXPECT_TRUE(session_.hasAnyArchivableFolderSelected()) << "its selected items count all the same";
}

}  // namespace
}  // namespace stowhaven
