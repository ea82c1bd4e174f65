#include "core/PackageScan.h"
#include "platform/TemporaryDirectory.h"
#include "support/DeviceRootScope.h"
#include "support/FakeServices.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

TEST(PackageScanTest, OneDpkgQueryWritesEveryPackageIntoTheWorkingFile) {
    test::TestFolder folder;
    test::DeviceRootScope root(folder.path().string());
    test::FakeServices services;

    EXPECT_FALSE(PackageScan::lines()) << "no file was left, so there is nothing to read";
    ASSERT_EQ(services.shell.commands.size(), 1u);
    EXPECT_EQ(services.shell.commands[0],
              "dpkg-query -W "
              "-f='${name}\t${Package}\t${Version}\t${Maintainer}\t${Section}\t${Depends}\t${status}\n' > " +
                  TemporaryDirectory::path() + "/cydiaApps.txt");
}

TEST(PackageScanTest, SplitsALineIntoItsSevenFieldsKeepingEmptyOnes) {
    const auto line = PackageScan::parse("\tcom.foo\t1.0\tme\tAddons_(SpringBoard)\t\tinstall ok installed");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->name, "");
    EXPECT_EQ(line->identifier, "com.foo");
    EXPECT_EQ(line->section, "Addons_(SpringBoard)");
    EXPECT_EQ(line->depends, "");
    EXPECT_EQ(line->status, "install ok installed");
    EXPECT_FALSE(PackageScan::parse("Foo\tcom.foo\t1.0\tme\tTweaks\tdeps"));
}

}  // namespace
}  // namespace stowhaven
