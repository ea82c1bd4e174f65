#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

class StorageProgramTest : public ::testing::Test {
protected:
    test::SandboxDevice device_{"minimal"};
};

TEST_F(StorageProgramTest, ShowsTheCurrentEngineItsRoomAndItsFolder) {
    const auto outcome = device_.run("storage");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("Storage: local storage (type 5)"), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("Free space: "), std::string::npos);
    EXPECT_NE(outcome.output.find("Folder: " + device_.path("/var/mobile/Library/Preferences/Stowhaven")),
              std::string::npos);
}

TEST_F(StorageProgramTest, UsingAnEngineMakesItCurrentAndKeepsIt) {
    ASSERT_EQ(device_.run("settings CurrentStorageType 0").status, 0);
    const auto outcome = device_.run("storage use local");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "Storage is now local storage (type 5).\n");
    EXPECT_EQ(device_.run("settings CurrentStorageType").output, "5\n");
}

TEST_F(StorageProgramTest, AnUnknownOrMissingEngineChangesNothing) {
    EXPECT_EQ(device_.run("storage use floppy").status, 2);
    const auto missing = device_.run("storage use dropbox");
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.errors.find("not available"), std::string::npos) << missing.errors;
    EXPECT_EQ(device_.run("settings CurrentStorageType").output, "5\n");
}

}  // namespace
}  // namespace stowhaven
