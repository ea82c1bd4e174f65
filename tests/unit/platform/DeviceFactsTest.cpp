#include "platform/DeviceFacts.h"
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

}  // namespace
}  // namespace stowhaven
