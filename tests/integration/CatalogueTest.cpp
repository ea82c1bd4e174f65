#include "core/CydiaFile.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "support/DeviceRootScope.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

// The real dpkg-query on the minimal sandbox device, asked for one package at a time.
class CatalogueTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { device_ = new test::SandboxDevice("minimal"); }
    static void TearDownTestSuite() { delete device_; }

    test::DeviceRootScope root_{device_->root()};
    static test::SandboxDevice* device_;
};

test::SandboxDevice* CatalogueTest::device_ = nullptr;

TEST_F(CatalogueTest, NamesOfInstalledPackages) {
    EXPECT_EQ(CydiaFile::getNameWithPackageName("mobilesubstrate"), "Substrate");
    EXPECT_FALSE(CydiaFile::getNameWithPackageName("com.example.extra")) << "in the repository, not installed";
    EXPECT_FALSE(CydiaFile::getNameWithPackageName("net.tinkerlane.quietbadges"))
        << "installed, but without a Name it reads as not installed";
}

TEST_F(CatalogueTest, DescriptionsOfInstalledPackages) {
    CydiaFile substrate("Substrate\tmobilesubstrate\t0.9.6011\tme\tDevelopment\t\tinstall ok installed");
    substrate.loadDescription();
    EXPECT_EQ(substrate.note(), "Substrate");

    CydiaFile missing("Extra\tcom.example.extra\t1.0\tme\tTweaks\t\tinstall ok installed");
    missing.loadDescription();
    EXPECT_EQ(missing.note(), "") << "dpkg-query failed, and its file was left empty";
    EXPECT_FALSE(FileManager::fileExists(TemporaryDirectory::path() + "/mobilesubstrate"));
    EXPECT_FALSE(FileManager::fileExists(TemporaryDirectory::path() + "/com.example.extra"));
}

TEST_F(CatalogueTest, AnIdentifierWithShellCharactersNeverReachesTheShell) {
    const std::string marker = device_->path("/marker");
    CydiaFile hostile("Evil\tmobilesubstrate;touch${IFS}" + marker + "\t1\tme\tS\t\tinstall ok installed");
    hostile.loadDescription();
    EXPECT_FALSE(CydiaFile::getNameWithPackageName("mobilesubstrate;touch " + marker));
    EXPECT_FALSE(CydiaFile::getNameWithPackageName("$(touch " + marker + ")"));
    EXPECT_FALSE(hostile.note());
    EXPECT_FALSE(FileManager::fileExists(marker));
}

}  // namespace
}  // namespace stowhaven
