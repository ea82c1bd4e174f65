#include "core/Supervisor.h"
#include "platform/UserDefaults.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

class SupervisorSandboxTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { original_ = new test::SandboxDevice("minimal"); }
    static void TearDownTestSuite() {
        delete original_;
        original_ = nullptr;
    }

    static test::SandboxDevice* original_;
    test::SandboxDevice device_{*original_, "device"};
    test::SupervisorScope scope_{device_.root()};
};

test::SandboxDevice* SupervisorSandboxTest::original_ = nullptr;

TEST_F(SupervisorSandboxTest, TheDevicesFactsComeFromItsImageAndItsMissingToolsAreInstalled) {
    const Supervisor& supervisor = scope_.supervisor();

    EXPECT_EQ(supervisor.deviceName(), "Test iPhone");
    EXPECT_EQ(supervisor.deviceInfos(), "\n\n\n-- iPhone7,2-8.1.2: 0123456789abcdef0123456789abcdef01234567");
    const auto& commands = scope_.services.shell.commands;
    EXPECT_EQ(std::count_if(commands.begin(), commands.end(),
                            [](const std::string& command) { return command.starts_with("apt-get install "); }),
              5);
}

TEST_F(SupervisorSandboxTest, AResetLeavesTheDeviceWithoutSettingsForEitherUser) {
    Supervisor& supervisor = scope_.supervisor();
    supervisor.setExitHandler([](int) {});
    supervisor.lowLevelStorePreferencesData(true, "ResetSettings");
    const std::string rootSettings = UserDefaults::pathForUser("root");
    fs::create_directories(fs::path(rootSettings).parent_path());
    fs::copy_file(UserDefaults::pathForUser("mobile"), rootSettings);

    supervisor.resetAllSettings();

    EXPECT_FALSE(fs::exists(UserDefaults::pathForUser("mobile")));
    EXPECT_FALSE(fs::exists(rootSettings));
    EXPECT_TRUE(fs::exists(device_.path("/var/mobile/Library/Preferences")));
}

}  // namespace
}  // namespace stowhaven
