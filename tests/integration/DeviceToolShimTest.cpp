#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/plist/PlistCodec.h"
#include "support/DeviceRootScope.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
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

// A plutil of the host that is not the device's (another program of that name), first on
// the program's search path: it fails loudly and leaves a mark when it runs.
class HostPlutilFirstOnPath {
public:
    explicit HostPlutilFirstOnPath(const test::TestFolder& folder)
        : mark_(folder / "host-plutil-ran"), savedPath_(std::getenv("PATH")) {
        const std::string bin = folder / "bin";
        EXPECT_TRUE(FileManager::createDirectory(bin, false, nullptr));
        std::ofstream(bin + "/plutil") << "#!/bin/sh\ntouch " << ShellQuote::path(mark_)
                                       << "\necho 'host plutil: not the device tool' >&2\nexit 1\n";
        EXPECT_TRUE(FileManager::setPermissions(bin + "/plutil", 0755, nullptr));
        setenv("PATH", (bin + ":" + savedPath_).c_str(), 1);
    }
    ~HostPlutilFirstOnPath() { setenv("PATH", savedPath_.c_str(), 1); }
    HostPlutilFirstOnPath(const HostPlutilFirstOnPath&) = delete;
    HostPlutilFirstOnPath& operator=(const HostPlutilFirstOnPath&) = delete;

    bool ran() const { return FileManager::fileExists(mark_); }

private:
    std::string mark_;
    std::string savedPath_;
};

class DeviceToolShimTest : public ::testing::Test {
protected:
    test::TestFolder folder_;
    test::DeviceRootScope root_{folder_.path().string()};
    const PlistValue contents_ = PlistValue::Dictionary{{"CydiaSources", PlistValue::Dictionary{}}, {"Count", 3}};

    void convert(const std::string& format, const std::string& path) {
        Platform::current().shell().systemExecute("plutil -convert " + format + " " + ShellQuote::path(path));
    }
};

TEST_F(DeviceToolShimTest, PlutilConvertsInPlaceBetweenXmlAndBinaryWhateverPlutilTheHostHas) {
    const HostPlutilFirstOnPath hostPlutil(folder_);
    const std::string path = folder_ / "com.saurik.Cydia.plist";
    ASSERT_TRUE(PlistCodec::writeFile(path, contents_, PlistFormat::Xml, 0644));

    convert("binary1", path);
    EXPECT_EQ(headOf(path, 8), "bplist00");
    EXPECT_EQ(PlistCodec::readFile(path), contents_);

    convert("xml1", path);
    EXPECT_EQ(headOf(path, 5), "<?xml");
    EXPECT_EQ(PlistCodec::readFile(path), contents_);
    EXPECT_FALSE(hostPlutil.ran()) << "the host's plutil stood in for the device's";
}

TEST_F(DeviceToolShimTest, PlutilLeavesADamagedFileAsItWas) {
    const std::string path = folder_ / "damaged.plist";
    std::ofstream(path) << "<?xml version=\"1.0\"?><plist><dict><key>a</key>";
    convert("binary1", path);
    EXPECT_EQ(headOf(path, 100), "<?xml version=\"1.0\"?><plist><dict><key>a</key>");
}

}  // namespace
}  // namespace stowhaven
