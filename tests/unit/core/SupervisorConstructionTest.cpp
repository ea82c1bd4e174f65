#include "core/Supervisor.h"
#include "platform/UserDefaults.h"
#include "support/SupervisorScope.h"

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

TEST_F(SupervisorConstructionTest, WhatTheDeviceHasIsLeftAloneAndAFolderInItsPlaceIsNotATool) {
    for (const char* file : {"/sbin/ifconfig", "/bin/mv", "/usr/bin/openssl", "/usr/bin/find",
                             "/var/root/Library/Preferences/com.apple.Accessibility.plist"}) {
        scope_.makeFile(file);
    }
    std::filesystem::create_directories(scope_.path("/usr/bin/gawk"));

    scope_.supervisor();

    EXPECT_EQ(commands(), (std::vector<std::string>{"apt-get install gawk", sweepCommand()}));
}

TEST_F(SupervisorConstructionTest, EachEnginesCountOfBackupsIsReadAtStartUnderItsOwnKey) {
    PreferenceStore& settings = UserDefaults::standard();
    settings.set("MaximumBackupsInFTP", 3);
    settings.set("MaximumBackupsInOwnCloud", 2);
    Supervisor& supervisor = scope_.supervisor();
    settings.set("MaximumBackupsInFTP", 9);

    supervisor.setStorageToFTP();
    EXPECT_EQ(supervisor.maximumBackupsToKeep(), 3) << "as read at start";
    supervisor.setStorageToOwnCloud();
    EXPECT_EQ(supervisor.maximumBackupsToKeep(), 2);
    supervisor.setStorageToDropbox();
    EXPECT_EQ(supervisor.maximumBackupsToKeep(), 0);
}

}  // namespace
}  // namespace stowhaven
