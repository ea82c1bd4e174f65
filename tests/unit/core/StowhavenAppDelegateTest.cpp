#include "core/DataToImport.h"
#include "core/ProcessFlags.h"
#include "core/SettingsKeys.h"
#include "core/StowhavenAppDelegate.h"
#include "core/Supervisor.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/ProcessControl.h"
#include "platform/TemporaryDirectory.h"
#include "platform/UserDefaults.h"
#include "platform/dispatch/NotificationCenter.h"
#include "support/SupervisorScope.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace stowhaven {
namespace {

using Dictionary = PlistValue::Dictionary;
using ::testing::ElementsAre;

// What a start changes beyond the flags, which the Supervisor's scope puts back itself.
class SavedProcessState {
public:
    SavedProcessState() = default;
    ~SavedProcessState() {
        gMinDeviceBatteryLevel = minDeviceBatteryLevel_;
        setLocalStoragePath(localStoragePath_);
        DataToImport::setURL(dataToImport_);
    }
    SavedProcessState(const SavedProcessState&) = delete;
    SavedProcessState& operator=(const SavedProcessState&) = delete;

private:
    float minDeviceBatteryLevel_ = gMinDeviceBatteryLevel;
    std::string localStoragePath_ = localStoragePath();
    std::optional<std::string> dataToImport_ = DataToImport::url();
};

class StowhavenAppDelegateTest : public ::testing::Test {
protected:
    void SetUp() override {
        ProcessControl::setExitHandler([this](int status) { exits_.push_back(status); });
        DataToImport::setURL(std::nullopt);
    }
    void TearDown() override { ProcessControl::setExitHandler({}); }

    static void firstStart() {
        StowhavenAppDelegate::setupUserDefaults();
        StowhavenAppDelegate::refreshPreferences();
    }
    static PreferenceStore& defaults() { return UserDefaults::standard(); }
    // What the settings file holds, the registered defaults left out.
    static Dictionary storedSettings() {
        return PreferenceStore(UserDefaults::pathForUser("mobile")).dictionaryRepresentation();
    }
    static std::string oldLocalFolder() { return DeviceRoot::var() + "/mobile/Media/Stowhaven"; }
    static std::string newLocalFolder() { return DeviceRoot::var() + "/mobile/Library/Preferences/Stowhaven"; }

    SavedProcessState saved_;
    test::SupervisorScope scope_;
    test::FakeBattery& battery_ = scope_.services.battery;
    std::vector<int> exits_;
    StowhavenAppDelegate delegate_;
};

// A key wired to another's flag would turn the wrong behaviour on or off.
TEST_F(StowhavenAppDelegateTest, EachBooleanSettingReachesAFlagOfItsOwn) {
    firstStart();
    std::map<std::atomic<bool>*, std::pair<std::string, bool>> flipped;
    for (const SettingKey& key : SettingsKeys::all()) {
        if (key.flag == nullptr) continue;
        EXPECT_EQ(key.kind, SettingKind::Boolean) << key.name;
        EXPECT_TRUE(flipped.emplace(key.flag, std::pair(std::string(key.name), !key.flag->load())).second)
            << key.name << " shares its flag";
        defaults().set(key.name, !key.flag->load());
    }
    StowhavenAppDelegate::refreshPreferences();
    for (const auto& [flag, expected] : flipped) EXPECT_EQ(flag->load(), expected.second) << expected.first;
}

TEST_F(StowhavenAppDelegateTest, BatteryLevelOutsideZeroToOneReadsAsZeroWithMonitoringOff) {
    StowhavenAppDelegate::setupUserDefaults();
    for (const double outside : {1.5, -0.25}) {
        SCOPED_TRACE(outside);
        defaults().set("MinDeviceBatteryLevel", outside);
        StowhavenAppDelegate::refreshPreferences();
        EXPECT_EQ(gMinDeviceBatteryLevel, 0.0f);
        EXPECT_FALSE(battery_.monitoring);
        EXPECT_EQ(defaults().object("MinDeviceBatteryLevel"), PlistValue(outside)) << "the setting itself stays";
    }
    defaults().set("MinDeviceBatteryLevel", 0.35);
    StowhavenAppDelegate::refreshPreferences();
    EXPECT_FLOAT_EQ(gMinDeviceBatteryLevel, 0.35f);
    EXPECT_TRUE(battery_.monitoring);
}

TEST_F(StowhavenAppDelegateTest, DescriptionAndTitleAreAskedForEvenWithoutRegisteredDefaultsUnlessTurnedOff) {
    defaults().set("BackupTitleEnabled", false);
    StowhavenAppDelegate::refreshPreferences();

    EXPECT_EQ(storedSettings().at("BackupDescriptionEnabled"), PlistValue(true));
    EXPECT_TRUE(gBackupDescriptionEnabled);
    EXPECT_EQ(storedSettings().at("BackupTitleEnabled"), PlistValue(false));
    EXPECT_FALSE(gBackupTitleEnabled);
}

TEST_F(StowhavenAppDelegateTest, LocalStorageInTheOldPlaceMovesToThePreferencesAndAnyOtherPlaceIsKept) {
    const std::string session = "/2014-01-01_10~00~00/PREFERENCES.idx";
    ASSERT_TRUE(FileManager::createDirectory(oldLocalFolder() + "/2014-01-01_10~00~00", true));
    ASSERT_TRUE(FileManager::writeFile(oldLocalFolder() + session, "index"));
    ASSERT_TRUE(FileManager::createDirectory(DeviceRoot::var() + "/mobile/Library/Preferences", true));
    defaults().set("LocalStoragePath", oldLocalFolder());

    firstStart();

    EXPECT_EQ(FileManager::contentsOfFile(newLocalFolder() + session), "index");
    EXPECT_FALSE(FileManager::fileExists(oldLocalFolder()));
    EXPECT_EQ(defaults().string("LocalStoragePath"), newLocalFolder());
    EXPECT_EQ(localStoragePath(), newLocalFolder());

    defaults().set("DropboxStoragePath", "/Backups/phone");
    defaults().set("LocalStoragePath", "/var/mobile/Documents/Stowhaven");
    firstStart();
    EXPECT_EQ(defaults().string("DropboxStoragePath"), "/Backups/phone");
    EXPECT_EQ(localStoragePath(), "/var/mobile/Documents/Stowhaven");
}

TEST_F(StowhavenAppDelegateTest, AFailedMoveLeavesTheDataButStillSwitchesToTheNewPlace) {
    ASSERT_TRUE(FileManager::createDirectory(oldLocalFolder(), true));
    ASSERT_TRUE(FileManager::writeFile(oldLocalFolder() + "/PHOTOS.idx", "index"));
    ASSERT_TRUE(FileManager::createDirectory(DeviceRoot::var() + "/mobile/Library/Preferences", true));
    ASSERT_TRUE(FileManager::writeFile(newLocalFolder(), "in the way"));
    defaults().set("LocalStoragePath", oldLocalFolder());

    firstStart();

    EXPECT_EQ(FileManager::contentsOfFile(oldLocalFolder() + "/PHOTOS.idx"), "index");
    EXPECT_EQ(FileManager::contentsOfFile(newLocalFolder()), "in the way");
    EXPECT_EQ(defaults().string("LocalStoragePath"), newLocalFolder());
    EXPECT_EQ(localStoragePath(), newLocalFolder());
}

TEST_F(StowhavenAppDelegateTest, AFileHandedInBeforeTheFirstForegroundWaitsAndPostsNothing) {
    firstStart();
    int dataLoaded = 0;
    NotificationCenter& center = NotificationCenter::defaultCenter();
    const auto observer = center.addObserver("DATA_LOADED", nullptr, [&](const Notification&) { ++dataLoaded; });

    delegate_.openURL("file:///var/mobile/Downloads/early.stowhvn", "Mail");
    scope_.serveMainQueue();
    EXPECT_EQ(DataToImport::url(), "file:///var/mobile/Downloads/early.stowhvn");
    EXPECT_EQ(dataLoaded, 0);
    EXPECT_FALSE(gAutobackupEnabled);

    delegate_.applicationWillEnterForeground();
    delegate_.openURL("file:///var/mobile/Downloads/later.stowhvn", "Mail");
    EXPECT_EQ(dataLoaded, 0) << "posted on the main queue, not at once";
    scope_.serveMainQueue();
    EXPECT_EQ(dataLoaded, 1);
    EXPECT_EQ(DataToImport::url(), "file:///var/mobile/Downloads/later.stowhvn");
    center.removeObserver(observer);
}

TEST_F(StowhavenAppDelegateTest, ReturningToTheForegroundTakesInSettingsChangedMeanwhile) {
    firstStart();
    ASSERT_TRUE(gSoundEnabled);
    PreferenceStore(UserDefaults::pathForUser("mobile")).set("SoundEnabled", false);

    delegate_.applicationWillEnterForeground();

    EXPECT_FALSE(gSoundEnabled);
    EXPECT_TRUE(gWasForegrounded);
    EXPECT_TRUE(exits_.empty());
}

TEST_F(StowhavenAppDelegateTest, LeavingLetsGoOfEverythingAndEndsTheProcess) {
    scope_.supervisor();  // its own start sweeps too
    const std::string temporary = TemporaryDirectory::path();
    const auto leaveWorkingFiles = [&] {
        ASSERT_TRUE(FileManager::writeFile(temporary + "/pkgs.txt", "x"));
        ASSERT_TRUE(FileManager::createDirectory(temporary + "/debs", false));
        ASSERT_TRUE(FileManager::writeFile(temporary + "/notes.log", "kept"));
        battery_.monitoring = true;
    };

    // Into the background with a status, or terminated.
    const std::function<void()> ways[] = {[&] { delegate_.applicationDidEnterBackground(3); },
                                          [&] { delegate_.applicationWillTerminate(); }};
    for (const auto& leave : ways) {
        leaveWorkingFiles();
        leave();
        EXPECT_FALSE(FileManager::fileExists(temporary + "/pkgs.txt") || FileManager::fileExists(temporary + "/debs"));
        EXPECT_TRUE(FileManager::fileExists(temporary + "/notes.log"));
        EXPECT_FALSE(battery_.monitoring);
    }
    EXPECT_THAT(exits_, ElementsAre(3, 0));
}

}  // namespace
}  // namespace stowhaven
