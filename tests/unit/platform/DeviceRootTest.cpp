#include "platform/DeviceRoot.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

class DeviceRootTest : public ::testing::Test {
protected:
    void TearDown() override { DeviceRoot::set("/"); }
};

TEST_F(DeviceRootTest, TheDeviceItselfLeavesPathsAlone) {
    ASSERT_TRUE(DeviceRoot::set("/"));
    EXPECT_TRUE(DeviceRoot::isDeviceItself());
    EXPECT_EQ(DeviceRoot::path("/etc/apt/sources.list.d/cydia.list"), "/etc/apt/sources.list.d/cydia.list");
    EXPECT_EQ(DeviceRoot::var(), "/var");
}

TEST_F(DeviceRootTest, AnotherRootStandsInFrontOfEveryPath) {
    ASSERT_TRUE(DeviceRoot::set("/srv/devices/phone-1/"));
    EXPECT_FALSE(DeviceRoot::isDeviceItself());
    EXPECT_EQ(DeviceRoot::get(), "/srv/devices/phone-1");
    EXPECT_EQ(DeviceRoot::path("/private/etc/hosts"), "/srv/devices/phone-1/private/etc/hosts");
    EXPECT_EQ(DeviceRoot::var() + "/mobile", "/srv/devices/phone-1/var/mobile");
}

TEST_F(DeviceRootTest, RelativeAndUntidyRootsAreMadeAbsolute) {
    ASSERT_TRUE(DeviceRoot::set("/srv/./devices//phone/../tablet"));
    EXPECT_EQ(DeviceRoot::get(), "/srv/devices/tablet");
    ASSERT_TRUE(DeviceRoot::set("relative-device"));
    EXPECT_TRUE(DeviceRoot::get().starts_with("/"));
    EXPECT_TRUE(DeviceRoot::get().ends_with("/relative-device"));
}

}  // namespace
}  // namespace stowhaven
