#include "platform/DeviceRoot.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

class DeviceRootTest : public ::testing::Test {
protected:
    void TearDown() override { DeviceRoot::set("/"); }
};

// Paths on "/" and on another root show in the command lines and every sandbox test.
TEST_F(DeviceRootTest, RelativeAndUntidyRootsAreMadeAbsolute) {
    ASSERT_TRUE(DeviceRoot::set("/srv/./devices//phone/../tablet"));
    EXPECT_EQ(DeviceRoot::get(), "/srv/devices/tablet");
    ASSERT_TRUE(DeviceRoot::set("relative-device"));
    EXPECT_TRUE(DeviceRoot::get().starts_with("/"));
    EXPECT_TRUE(DeviceRoot::get().ends_with("/relative-device"));
}

}  // namespace
}  // namespace stowhaven
