#include "platform/Platform.h"
#include "platform/plist/PlistCodec.h"
#include "support/DeviceRootScope.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace stowhaven {
namespace {

std::string headOf(const std::string& path, std::size_t count) {
    std::ifstream file(path, std::ios::binary);
    std::string head(count, '\0');
    file.read(head.data(), static_cast<std::streamsize>(count));
    return head.substr(0, static_cast<std::size_t>(file.gcount()));
}

class DeviceToolShimTest : public ::testing::Test {
protected:
    test::TestFolder folder_;
    test::DeviceRootScope root_{folder_.path().string()};
    const PlistValue contents_ = PlistValue::Dictionary{{"CydiaSources", PlistValue::Dictionary{}}, {"Count", 3}};
};

TEST_F(DeviceToolShimTest, PlutilConvertsInPlaceBetweenXmlAndBinary) {
    const std::string path = folder_ / "com.saurik.Cydia.plist";
    ASSERT_TRUE(PlistCodec::writeFile(path, contents_, PlistFormat::Xml, 0644));

    Platform::current().shell().systemExecute("plutil -convert binary1 " + path);
    EXPECT_EQ(headOf(path, 8), "bplist00");
    EXPECT_EQ(PlistCodec::readFile(path), contents_);

    Platform::current().shell().systemExecute("plutil -convert xml1 " + path);
    EXPECT_EQ(headOf(path, 5), "<?xml");
    EXPECT_EQ(PlistCodec::readFile(path), contents_);
}

TEST_F(DeviceToolShimTest, PlutilLeavesADamagedFileAsItWas) {
    const std::string path = folder_ / "damaged.plist";
    std::ofstream(path) << "<?xml version=\"1.0\"?><plist><dict><key>a</key>";
    Platform::current().shell().systemExecute("plutil -convert binary1 " + path);
    EXPECT_EQ(headOf(path, 100), "<?xml version=\"1.0\"?><plist><dict><key>a</key>");
}

}  // namespace
}  // namespace stowhaven
