#include "core/PackageScan.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "support/DeviceRootScope.h"
#include "support/SandboxDevice.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace stowhaven {
namespace {

// The host's own view, without the device root's variables.
bool hostKnowsPackage(const std::string& identifier) {
    return std::system(
               ("env -u DPKG_ROOT -u DPKG_ADMINDIR -u APT_CONFIG dpkg-query -W " + identifier + " >/dev/null 2>&1")
                   .c_str()) == 0;
}

bool hostAptKnowsPackage(const std::string& identifier) {
    return std::system(("env -u APT_CONFIG apt-cache show " + identifier + " >/dev/null 2>&1").c_str()) == 0;
}

std::vector<std::string> scannedIdentifiers() {
    std::vector<std::string> identifiers;
    for (const std::string& line : PackageScan::lines().value_or(std::vector<std::string>{})) {
        if (const auto scan = PackageScan::parse(line)) identifiers.push_back(scan->identifier);
    }
    return identifiers;
}

bool contains(const std::vector<std::string>& list, const std::string& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

class DeviceIsolationTest : public ::testing::Test {
protected:
    test::SandboxDevice device_{"minimal"};
    test::DeviceRootScope root_{device_.root()};
    Shell& shell_ = Platform::current().shell();
};

TEST_F(DeviceIsolationTest, AptGetWorksOnTheRootsOwnSourcesListsAndCaches) {
    shell_.systemExecute("apt-get update");
    shell_.systemExecute("apt-get -y install com.example.extra");

    EXPECT_TRUE(contains(scannedIdentifiers(), "com.example.extra"));
    EXPECT_FALSE(hostKnowsPackage("com.example.extra"));
    EXPECT_FALSE(hostAptKnowsPackage("com.example.extra"));
}

// apt's settings have no way to name a folder whose name holds a double quote: on such a
// root apt-get refuses to run, rather than fall back on the host's own settings and database.
TEST(DeviceIsolationOnAnUnnamableRootTest, AptRefusesRatherThanActOnTheHost) {
    const test::TestFolder folder;
    const std::string root = folder / "dev\"ice";
    ASSERT_TRUE(FileManager::createDirectory(root, false));
    const test::DeviceRootScope scope(root);
    const std::string output = folder / "apt-config.txt";
    Platform::current().shell().systemExecute("apt-config dump > " + ShellQuote::path(output) + " 2>&1");
    const std::string dump = FileManager::contentsOfFile(output).value_or("");
    EXPECT_NE(dump.find("E: "), std::string::npos) << dump;
    EXPECT_EQ(dump.find("Dir::State::status"), std::string::npos) << dump;
}

}  // namespace
}  // namespace stowhaven
