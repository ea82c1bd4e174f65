#include "core/Supervisor.h"
#include "platform/UserDefaults.h"
#include "support/SupervisorScope.h"
#include "support/CapturedLog.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace stowhaven {
namespace {

class SupervisorConstructionTest : public ::testing::Test {
protected:
    const std::vector<std::string>& commands() const { return scope_.services.shell.commands; }
    std::string sweepCommand() const { return "cd \"" + scope_.path("/var/tmp/stowhaven") + "\"; rm *-[0-9]*"; }

    test::SupervisorScope scope_;
};

// The MTU of the network interface is the running machine's: on the scope's copy of a
// device it is only logged.
TEST_F(SupervisorConstructionTest, ABareDeviceGetsTheSettingsLinkAndTheFiveToolsBeforeTheSweep) {
    test::CapturedLog log;
    scope_.supervisor();
    EXPECT_TRUE(log.contains("as it acts on the running system: ifconfig en0 mtu 1400"));
    const std::string var = scope_.path("/var");
    EXPECT_EQ(commands(), (std::vector<std::string>{
                              "ln -sf " + var + "/mobile/Library/Preferences/com.apple.Accessibility.plist " + var +
                                  "/root/Library/Preferences/com.apple.Accessibility.plist",
                              "apt-get install network-cmds",
                              "apt-get install gawk",
                              "apt-get install coreutils-bin",
                              "apt-get install openssl",
                              "apt-get install findutils",
                              sweepCommand(),
                          }));
}

TEST_F(SupervisorConstructionTest, WhatTheDeviceHasIsLeftAloneAndAFolderInItsPlaceIsNotATool) {
    for (const char* file : {"/sbin/ifconfig", "/bin/mv", "/usr/bin/openssl", "/usr/bin/find",
                             "/var/root/Library/Preferences/com.apple.Accessibility.plist"}) {
        scope_.makeFile(file);
    }
    std::filesystem::create_directories(scope_.path("/usr/bin/gawk"));
    test::CapturedLog log;

    scope_.supervisor();

    EXPECT_EQ(commands(), (std::vector<std::string>{"apt-get install gawk", sweepCommand()}));
    EXPECT_TRUE(log.contains("Installed missing <gawk>!"));
}

TEST_F(SupervisorConstructionTest, AFirstLaunchIsOnLocalStorageWithOrWithoutTheRegisteredDefault) {
    EXPECT_EQ(scope_.supervisor().currentStorageType(), StorageType::Local);

    UserDefaults::standard().registerDefaults({{"CurrentStorageType", 5}});
    scope_.restartSupervisor();
    EXPECT_EQ(scope_.supervisor().currentStorageType(), StorageType::Local);

    UserDefaults::standard().set("CurrentStorageType", 6);
    scope_.restartSupervisor();
    EXPECT_EQ(scope_.supervisor().currentStorageType(), StorageType::FTP);
}

TEST_F(SupervisorConstructionTest, TheDevicesFactsAreReadOnceAndGoIntoEveryMail) {
    test::CapturedLog log;
    const Supervisor& supervisor = scope_.supervisor();
    const DeviceFacts& device = test::SupervisorScope::kPinnedDevice;

    EXPECT_EQ(supervisor.deviceUID(), device.uniqueIdentifier);
    EXPECT_EQ(supervisor.deviceName(), device.name);
    EXPECT_EQ(supervisor.devicePlatform(), device.platform);
    EXPECT_EQ(supervisor.deviceSystemVersion(), device.systemVersion);
    EXPECT_EQ(supervisor.version(), STOWHAVEN_VERSION);
    EXPECT_EQ(supervisor.deviceInfos(), "\n\n\n-- iPhone7,2-8.1.2: " + device.uniqueIdentifier);
    EXPECT_TRUE(log.contains("UDID: " + device.uniqueIdentifier));
}

TEST_F(SupervisorConstructionTest, SettingsReadAtStartStayAsTheyWereRead) {
    PreferenceStore& settings = UserDefaults::standard();
    settings.set("SoundEnabled", true);
    settings.set("MaximumBackupsInFTP", 3);
    settings.set("MaximumBackupsInOwnCloud", 2);
    Supervisor& supervisor = scope_.supervisor();
    settings.set("SoundEnabled", false);
    settings.set("MaximumBackupsInFTP", 9);

    EXPECT_TRUE(supervisor.isSoundEnabled());
    EXPECT_FALSE(supervisor.isVibrateEnabled());
    supervisor.setStorageToFTP();
    EXPECT_EQ(supervisor.maximumBackupsToKeep(), 3);
    supervisor.setStorageToOwnCloud();
    EXPECT_EQ(supervisor.maximumBackupsToKeep(), 2);
    supervisor.setStorageToBox();
    EXPECT_EQ(supervisor.maximumBackupsToKeep(), 0);
}

TEST(SessionStampTest, NamesASecondOfLocalTimeAndReadsBackToIt) {
    const auto stamp = gDateFormatter.dateFromString("2014-03-09_17~05~42");
    ASSERT_TRUE(stamp);
    EXPECT_EQ(gDateFormatter.stringFromDate(*stamp), "2014-03-09_17~05~42");

    const Date whole(436000000.0);
    EXPECT_EQ(gDateFormatter.dateFromString(gDateFormatter.stringFromDate(whole)), whole);
    EXPECT_EQ(gDateFormatter.stringFromDate(whole.dateByAddingTimeInterval(0.75)),
              gDateFormatter.stringFromDate(whole));
}

TEST(SessionStampTest, ReadsNothingButAStampOfARealDay) {
    for (const char* text : {"2014-02-31_10~00~00", "2014-03-09_24~00~00", "2014-03-09 17:05:42", "2014-03-09_17~05~4",
                             "2014-03-09_17~05~42.stowhvn", "", "abcd-03-09_17~05~42"}) {
        EXPECT_FALSE(gDateFormatter.dateFromString(text)) << text;
    }
}

}  // namespace
}  // namespace stowhaven
