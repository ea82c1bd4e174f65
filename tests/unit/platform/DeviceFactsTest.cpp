#include "platform/DeviceFacts.h"
#include "platform/DeviceRoot.h"
#include "platform/plist/PlistCodec.h"
#include "support/DeviceRootScope.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace stowhaven {
namespace {

class DeviceFactsTest : public ::testing::Test {
protected:
    void writePlist(const std::string& devicePath, PlistValue::Dictionary contents, PlistFormat format) {
        const std::filesystem::path path = folder_.path().string() + devicePath;
        std::filesystem::create_directories(path.parent_path());
        ASSERT_TRUE(PlistCodec::writeFile(path, contents, format, 0644));
    }
    test::TestFolder folder_;
    test::DeviceRootScope root_{folder_.path().string()};
};

TEST_F(DeviceFactsTest, ComeFromWhereTheDeviceImageKeepsThem) {
    writePlist("/System/Library/CoreServices/SystemVersion.plist", {{"ProductVersion", "8.1.2"}}, PlistFormat::Xml);
    writePlist("/var/root/Library/Lockdown/data_ark.plist",
               {{"-DeviceName", "  Ann's iPhone\n"}, {"-UniqueDeviceID", "3f2a9c"}, {"-ProductType", "iPhone7,2"}},
               PlistFormat::Binary);

    EXPECT_EQ(DeviceFactsReader::read(), (DeviceFacts{"3f2a9c", "Ann's iPhone", "iPhone7,2", "8.1.2"}));
}

// Paths on "/" and on another root show in the command lines and every sandbox test.
TEST(DeviceRootTest, RelativeAndUntidyRootsAreMadeAbsolute) {
    const test::DeviceRootScope putBackAfterwards("/");
    ASSERT_TRUE(DeviceRoot::set("/srv/./devices//phone/../tablet"));
    EXPECT_EQ(DeviceRoot::get(), "/srv/devices/tablet");
    ASSERT_TRUE(DeviceRoot::set("relative-device"));
    EXPECT_TRUE(DeviceRoot::get().starts_with("/"));
    EXPECT_TRUE(DeviceRoot::get().ends_with("/relative-device"));
}

}  // namespace
}  // namespace stowhaven
