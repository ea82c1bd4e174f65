// The settings screens driven through the recording alerts, on a sandbox device backed up to
// local storage: the engine rows' taps, the backups to keep, the switches, and leaving.

#include "flows/InAppSettingsViewController.h"
#include "flows/SettingsViewController.h"
#include "platform/PreferenceStore.h"
#include "platform/Strings.h"
#include "platform/UserDefaults.h"
#include "storage/StorageEngines.h"
#include "storage/addressbook/ABAddressBookHelper.h"
#include "support/CatalogueFixture.h"

namespace stowhaven {
namespace {

using Tap = SettingsViewController::TapResult;

constexpr std::size_t kSugarSyncRow = 6;
constexpr std::size_t kLocalRow = 7;
constexpr std::size_t kAddressBookRow = 8;

class SettingsFlowTest : public test::CatalogueFixture {
protected:
    SettingsFlowTest() {
        reloads_ = NotificationCenter::defaultCenter().addObserver("RELOAD_DATA_NEEDED", nullptr,
                                                                   [this](const Notification&) { ++reloadsAsked_; });
    }
    ~SettingsFlowTest() override {
        NotificationCenter::defaultCenter().removeObserver(reloads_);
        ABAddressBookHelper::destroyShared();
    }

    test::RecordingAlertPresenter& alerts() const { return *scope_.screens.alerts; }
    std::string lastTitle() const { return alerts().alerts.empty() ? "" : alerts().alerts.back().title; }
    void answer(std::size_t button, std::optional<std::string> text = std::nullopt) {
        alerts().dismissLast(button, std::move(text));
        scope_.serveMainQueue();
    }
    PreferenceStore storedSettings() const { return PreferenceStore(UserDefaults::pathForUser("mobile")); }

    std::shared_ptr<SettingsViewController> settings_ = SettingsViewController::create();
    int reloadsAsked_ = 0;
    NotificationCenter::ObserverToken reloads_{};
};

TEST_F(SettingsFlowTest, BackupsToKeepTakeATrimmedRunOfDigitsAndLeavingKeepsThem) {
    settings_->askMaximumBackupsToKeep();
    answer(1, " 12 \n");
    EXPECT_EQ(settings_->maximumBackupsToKeep(), 12);

    for (const char* refused : {"1a", "", "-3", "+4", "4294967308"}) {
        settings_->askMaximumBackupsToKeep();
        answer(1, refused);
        EXPECT_EQ(lastTitle(), Strings::localized("WARNING")) << refused;
        EXPECT_EQ(alerts().alerts.back().message, Strings::localized("ERROR_MESSAGE_MAX_BACKUP"));
        EXPECT_EQ(settings_->maximumBackupsToKeep(), 12) << refused;
    }
    settings_->askMaximumBackupsToKeep();
    answer(0, "3");
    EXPECT_EQ(settings_->maximumBackupsToKeep(), 12) << "Cancel changes nothing";
    EXPECT_FALSE(storedSettings().keyExists("MaximumBackupsInLocal")) << "kept only on leaving";

    settings_->saveChanges();
    EXPECT_EQ(storedSettings().number("MaximumBackupsInLocal"), PlistValue(std::int64_t{12}));
    EXPECT_EQ(reloadsAsked_, 1);
}

// The erase takes the sessions and leaves whatever else the user keeps in the folder.
TEST_F(SettingsFlowTest, TheCurrentLocalRowAsksBeforeErasingAndAnotherRowOnlySwitches) {
    const std::string name = store(sessionOf(500000000, "package"));
    const std::string sessionFolder = localStoragePath() + "/" + name.substr(0, name.find('.'));
    const std::string usersFile = localStoragePath() + "/notes.txt";
    ASSERT_TRUE(FileManager::createDirectory(sessionFolder, true));
    ASSERT_TRUE(FileManager::writeFile(usersFile, "mine"));

    EXPECT_EQ(settings_->tapEngineRow(kSugarSyncRow), Tap::LoginNeeded);
    EXPECT_TRUE(scope_.supervisor().isStorageLocal()) << "an engine without a login isn't taken";

    scope_.supervisor().setStorageToAddressbook();
    EXPECT_EQ(settings_->tapEngineRow(kLocalRow), Tap::Done);
    EXPECT_TRUE(scope_.supervisor().isStorageLocal());
    EXPECT_TRUE(alerts().alerts.empty());
    EXPECT_TRUE(settings_->engineRows()[kLocalRow].highlighted);

    EXPECT_EQ(settings_->tapEngineRow(kLocalRow), Tap::Asked);
    EXPECT_EQ(lastTitle(), Strings::localized("LOCAL_STORAGE_ERASE_TITLE"));
    answer(0);
    EXPECT_TRUE(isStored(name)) << "No erases nothing";
    EXPECT_EQ(reloadsAsked_, 0);

    settings_->tapEngineRow(kLocalRow);
    answer(1);
    EXPECT_FALSE(isStored(name));
    EXPECT_FALSE(FileManager::fileExists(sessionFolder));
    EXPECT_TRUE(FileManager::fileExists(usersFile));
    EXPECT_EQ(reloadsAsked_, 1);
    EXPECT_TRUE(settings_->storageChanged());
}

// The owner allows access, but the book can't be opened: the helper stays silent, and the
// screen must not leave the address book current.
TEST_F(SettingsFlowTest, AnAddressBookThatIsNotValidNeverStaysCurrent) {
    ASSERT_TRUE(FileManager::createDirectory(device_.path("/var/mobile/Library"), true));
    EXPECT_EQ(settings_->tapEngineRow(kAddressBookRow), Tap::Done);
    EXPECT_TRUE(scope_.supervisor().isStorageAddressbook());
    EXPECT_EQ(settings_->tapEngineRow(kAddressBookRow), Tap::Asked);
    EXPECT_EQ(lastTitle(), Strings::localized("DELETE_CONFIRMATION_TITLE"));

    ABAddressBookHelper::destroyShared();
    const std::string book = device_.path("/var/mobile/Library/AddressBook");
    ASSERT_TRUE(FileManager::removeItem(book));
    ASSERT_TRUE(FileManager::writeFile(book, "not a folder"));
    EXPECT_EQ(settings_->tapEngineRow(kAddressBookRow), Tap::Refused);
    EXPECT_TRUE(scope_.supervisor().isStorageLocal());

    settings_->saveChanges();
    EXPECT_EQ(storedSettings().number("CurrentStorageType"), PlistValue(std::int64_t{5}));
    EXPECT_EQ(reloadsAsked_, 1) << "leaving posts it, whatever happened";
}

// The main flow reads the flags, the next start the settings: a switch changes both at once.
TEST_F(SettingsFlowTest, ASwitchAndTheSliderCountInTheFlagAndTheSettingsTogether) {
    InAppSettingsViewController switches;
    const SwitchRow& scanPhotos = switchSections()[0].rows[4];
    ASSERT_STREQ(scanPhotos.key, "AutoScanPhotosEnabled");
    switches.setOn(scanPhotos, true);
    EXPECT_TRUE(gAutoScanPhotosEnabled);
    EXPECT_TRUE(storedSettings().boolean("AutoScanPhotosEnabled"));
    EXPECT_TRUE(switches.scansChanged());

    switches.setBatteryLevel(1.5);
    EXPECT_EQ(gMinDeviceBatteryLevel, 1.0f);
    EXPECT_EQ(storedSettings().number("MinDeviceBatteryLevel"), PlistValue(1.0));
    switches.setBatteryLevel(0.4);
    EXPECT_EQ(InAppSettingsViewController::levelText(switches.batteryLevel()), "40%");
}

}  // namespace
}  // namespace stowhaven
