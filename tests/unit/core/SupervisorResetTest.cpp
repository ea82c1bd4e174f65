#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/UserDefaults.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

class SupervisorResetTest : public ::testing::Test {
protected:
    SupervisorResetTest() {
        supervisor_.setExitHandler([this](int status) { exits_.push_back(status); });
        settings_.set("SoundEnabled", true);
        settings_.set("CurrentStorageType", 1);
        fs::create_directories(fs::path(UserDefaults::pathForUser("root")).parent_path());
        FileManager::writeFile(UserDefaults::pathForUser("root"), "root's settings");
        supervisor_.setStorageToDropbox();
    }

    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
    PreferenceStore& settings_ = UserDefaults::standard();
    std::vector<int> exits_;
};

TEST_F(SupervisorResetTest, AResetOfTheSettingsRemovesThemForBothUsersAndEndsOnceTheAlertGoes) {
    settings_.set("ResetSettings", true);

    supervisor_.resetAllSettings();
    scope_.serveMainQueue();

    EXPECT_FALSE(fs::exists(UserDefaults::pathForUser("mobile")));
    EXPECT_FALSE(fs::exists(UserDefaults::pathForUser("root")));
    EXPECT_FALSE(settings_.boolean("ResetSettings"));
    EXPECT_TRUE(supervisor_.isStorageLocal());
    EXPECT_TRUE(supervisor_.isStorageSameAsDefault());

    const auto& alerts = scope_.screens.alerts->alerts;
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0].title, "Settings reset");
    EXPECT_TRUE(exits_.empty());
    scope_.screens.alerts->dismissLast();
    EXPECT_EQ(exits_, std::vector<int>{0});
}

TEST_F(SupervisorResetTest, AResetOfTheCloudServicesKeepsTheOtherSettingsAndGoesBackToLocalStorage) {
    settings_.set("ResetCloudServices", true);

    supervisor_.resetAllSettings();
    scope_.serveMainQueue();
    scope_.screens.alerts->dismissLast();

    EXPECT_EQ(settings_.object("ResetCloudServices"), PlistValue(false));
    EXPECT_EQ(settings_.object("CurrentStorageType"), PlistValue(5));
    EXPECT_TRUE(settings_.boolean("SoundEnabled"));
    EXPECT_TRUE(fs::exists(UserDefaults::pathForUser("root")));
    EXPECT_EQ(exits_, std::vector<int>{0});
}

}  // namespace
}  // namespace stowhaven
