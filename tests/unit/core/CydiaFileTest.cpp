#include "core/CydiaFile.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "support/DeviceRootScope.h"
#include "support/FakeServices.h"
#include "support/TestFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using ::testing::ElementsAre;

CydiaFile scanned(const std::string& identifier, const std::string& depends = "",
                  const std::string& status = "install ok installed") {
    return CydiaFile("Name\t" + identifier + "\t1.0\tme\tTweaks\t" + depends + "\t" + status);
}

CydiaFile needingFirmware(const std::string& firmwareSpecs) { return scanned("com.foo", firmwareSpecs); }

// ----- Reading a line

TEST(CydiaFileTest, PaddedAndShortLines) {
    const CydiaFile padded(" \t com.foo \t 1.0 \t me \t_Tweaks_\t\tinstall ok installed");
    EXPECT_EQ(padded.name(), "com.foo") << "an empty name takes the identifier";
    EXPECT_EQ(padded.version(), "1.0");
    EXPECT_EQ(padded.sectionName(), "Tweaks");
    EXPECT_FALSE(padded.dependsList()) << "an empty depends field is no dependency";

    const CydiaFile four("Foo\tcom.foo\t1.0\tme");
    EXPECT_FALSE(four.name());
    EXPECT_FALSE(four.packageName());

    const CydiaFile five("Foo\tcom.foo\t1.0\tme\tTweaks");
    EXPECT_EQ(five.packageName(), "com.foo");
    EXPECT_EQ(five.backupData(), "Foo\tcom.foo\t(null)\t(null)\t(null)\t(null)");
}

// The prefixes are plain prefix tests, so that zipper and baseball go too; the names
// are whole names, so that cydia-foo stays.
TEST(CydiaFileTest, RefusedPackages) {
    for (const char* identifier :
         {"com.larkmoor.stowhaven", "gsc.wifi", "gsc.", "base", "baseball", "cy+cpu.arm", "cy+foo", "firmware-sbin",
          "firmware-sbin-extra", "zip", "zipper", "unzip", "unzip-tools", "cydia", "cydia-lproj", "firmware"}) {
        const CydiaFile package = scanned(identifier);
        EXPECT_FALSE(package.packageName()) << identifier;
        EXPECT_FALSE(package.name()) << identifier;
    }
    for (const char* identifier : {"cydia-foo", "com.saurik.cydia", "Cydia", "firmware-foo", "gsc", "mybase",
                                   "com.larkmoor.stowhaven.extra", "bzip2", "libzip"}) {
        EXPECT_EQ(scanned(identifier).packageName(), identifier);
    }
}

TEST(CydiaFileTest, DependsKeepEveryAlternativeAndSetTheFirmwareApart) {
    EXPECT_THAT(*scanned("com.foo", "firmware (>= 4.0), a | b (>= 1), c").dependsList(), ElementsAre("a", "b", "c"))
        << "every alternative";
    EXPECT_EQ(scanned("com.foo", "firmware (>= 2.0), x, firmware (<< 9.0) | y").firmwareSpecs(), "firmware (<< 9.0)")
        << "the last firmware alternative wins";
    EXPECT_THAT(*scanned("com.foo", " zeta (>= 1) ,alpha|  Beta ,zeta").dependsList(),
                ElementsAre("Beta", "alpha", "zeta", "zeta"))
        << "sorted by character code, duplicates kept";
    EXPECT_THAT(*scanned("com.foo", "foo(>=1), , |").dependsList(), ElementsAre("foo(>=1)"))
        << "only the text before a blank names the package";
    EXPECT_FALSE(scanned("com.foo", "firmware (>= 3.0)").dependsList());
}

// ----- The stored line

// A stored line reads back as the same record and the same line, without the firmware
// need; a stored line without dependencies depends on a package named "(null)".
TEST(CydiaFileTest, TheStoredLineReadsBackAsItWasWritten) {
    const CydiaFile package = scanned("com.foo", "firmware (>= 4.0), b, a");
    EXPECT_EQ(package.backupData(), "Name\tcom.foo\t1.0\tme\tTweaks\ta,b");
    const CydiaFile stored(package.backupData());
    EXPECT_TRUE(stored.isEqual(package));
    EXPECT_FALSE(stored.firmwareSpecs());

    const CydiaFile named = scanned("com.foo", "deinstaller-kit (>= 1.0)");
    EXPECT_EQ(CydiaFile(named.backupData()).packageName(), "com.foo") << "a dependency is no removed package's status";

    const CydiaFile bare = scanned("com.foo");
    ASSERT_EQ(bare.backupData(), "Name\tcom.foo\t1.0\tme\tTweaks\t(null)");
    const CydiaFile storedBare(bare.backupData());
    EXPECT_THAT(*storedBare.dependsList(), ElementsAre("(null)"));
    EXPECT_EQ(storedBare.backupData(), bare.backupData());
}

TEST(CydiaFileTest, APackageIsNamedByItsIdentifierOrItsRockVariant) {
    EXPECT_TRUE(scanned("libhide").isPackageNamed("libhide"));
    EXPECT_TRUE(scanned("libhide.rock").isPackageNamed("libhide"));
    EXPECT_FALSE(scanned("libhide.rocks").isPackageNamed("libhide"));
    EXPECT_FALSE(scanned("libhide2.rock").isPackageNamed("libhide"));
    EXPECT_FALSE(scanned("libhide").isPackageNamed("libhide.rock"));

    const CydiaFile dependent = scanned("com.foo", "libhide.rock (>= 1), other");
    EXPECT_TRUE(dependent.dependsOnPackage("libhide"));
    EXPECT_FALSE(dependent.dependsOnPackage("lib"));
    EXPECT_FALSE(scanned("com.foo").dependsOnPackage("libhide"));
}

TEST(CydiaFileTest, TheInstallLogTellsHowTheInstallWent) {
    CydiaFile package = scanned("com.foo");
    EXPECT_FALSE(package.isSuccessfullyInstalled());
    EXPECT_FALSE(package.isAlreadyInstalled());

    package.setInstallLog("Unpacking com.foo (1.0) ...\nSETTING UP Com.Foo:iphoneos-arm (1.0) ...\n");
    EXPECT_TRUE(package.isSuccessfullyInstalled());
    EXPECT_FALSE(package.isAlreadyInstalled());

    package.setInstallLog("Reading package lists...\nCOM.FOO is already the newest version.\n");
    EXPECT_TRUE(package.isAlreadyInstalled());
    EXPECT_FALSE(package.isSuccessfullyInstalled());

    package.setInstallLog("Setting up com.foobar (1.0) ...\ncom.foo is already the newest version\n");
    EXPECT_TRUE(package.isSuccessfullyInstalled()) << "a text test: com.foobar holds com.foo";
    EXPECT_FALSE(package.isAlreadyInstalled()) << "the full stop belongs to the text";
}

// ----- Firmware

// The numbers are the digits of each version, the one with fewer parts multiplied by the
// difference of the part counts (not by a power of ten), then compared as unsigned.
TEST(CydiaFileTest, FirmwareComparisonKeepsItsOddAlignment) {
    struct Case {
        const char* device;
        const char* firmwareNeed;
        bool compatible;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"6.1.3", "firmware (>= 7.0)", true},    // 613 against 70
             {"8.1.2", "firmware (<< 9.0)", false},   // 812 against 90
             {"1.0.0.0", "firmware (>= 5.0)", true},  // 1000 against 50 x 2, not 5000
             {"8", "firmware (>= 7.0.1)", false},     // 8 x 2 against 701, not 800
             {"7.0", "firmware (>= 7.1)", false},     // equal counts: 70 against 71
             {"7.1", "firmware (>= 7.1)", true},
             {"8.1", "firmware (<< 9.0)", true},
             {"9.0", "firmware (<< 9.0)", false},
             {"8.1", "firmware (<= 8.1)", true},
             {"8.2", "firmware (<= 8.1)", false},
             {"8.1", "firmware (>> 8.1)", false},
             {"8.2", "firmware (>> 8.1)", true},
             {"8.1", "firmware (= 8.1)", false},  // any other operator means strictly below
             {"8.0", "firmware (= 8.1)", true},
             {"8.1", "firmware (>= -1.0)", false},  // -10 is a huge unsigned number
             {"8.1", "firmware", false},            // no parentheses: no operator, number 0
         }) {
        EXPECT_EQ(needingFirmware(c.firmwareNeed).isFirmwareCompatible(c.device), c.compatible)
            << c.device << " " << c.firmwareNeed;
    }
}

// The catalogue tests show the real dpkg-query refusing shell characters; here the rest of
// the identifiers that must never reach it.
TEST(CydiaFileQueryTest, AnIdentifierThatIsNoPackageNameRunsNothing) {
    test::TestFolder folder;
    test::DeviceRootScope root(folder.path().string());
    test::FakeServices services;
    for (const char* identifier : {"a b", "-foo", "`id`"}) EXPECT_FALSE(CydiaFile::getNameWithPackageName(identifier));
    EXPECT_TRUE(services.shell.commands.empty());

    // Identifiers that name folders: the query's file is never the folder itself.
    ASSERT_TRUE(FileManager::writeFile(TemporaryDirectory::path() + "/keep", "x"));
    EXPECT_FALSE(CydiaFile::getNameWithPackageName("."));
    EXPECT_FALSE(CydiaFile::getNameWithPackageName(".."));
    EXPECT_TRUE(FileManager::fileExists(TemporaryDirectory::path() + "/keep"));
}

}  // namespace
}  // namespace stowhaven
