#include "core/CydiaFile.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "support/DeviceRootScope.h"
#include "support/FakeServices.h"
#include "support/TestFolder.h"
#include "support/CapturedLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using ::testing::ElementsAre;

const std::string kTweakLine = "Foo\tcom.foo\t1.0\tme\tTweaks\tmobilesubstrate\tinstall ok installed";

CydiaFile scanned(const std::string& identifier, const std::string& depends = "",
                  const std::string& status = "install ok installed") {
    return CydiaFile("Name\t" + identifier + "\t1.0\tme\tTweaks\t" + depends + "\t" + status);
}

CydiaFile needingFirmware(const std::string& firmwareSpecs) { return scanned("com.foo", firmwareSpecs); }

// ----- Reading a line

TEST(CydiaFileTest, AScanLineGivesEveryFieldAndAFreshRecord) {
    const CydiaFile package(kTweakLine);
    EXPECT_EQ(package.name(), "Foo");
    EXPECT_EQ(package.packageName(), "com.foo");
    EXPECT_EQ(package.version(), "1.0");
    EXPECT_EQ(package.maintainerName(), "me");
    EXPECT_EQ(package.sectionName(), "Tweaks");
    EXPECT_THAT(*package.dependsList(), ElementsAre("mobilesubstrate"));
    EXPECT_FALSE(package.firmwareSpecs());
    EXPECT_FALSE(package.note());
    EXPECT_FALSE(package.isBackupSelected());
    EXPECT_FALSE(package.isRestoreSelected());
    EXPECT_TRUE(package.isTopLevel());
}

TEST(CydiaFileTest, FieldsAreTrimmedAndAnEmptyNameTakesTheIdentifier) {
    const CydiaFile package(" \t com.foo \t 1.0 \t me \tTweaks\t\tinstall ok installed");
    EXPECT_EQ(package.name(), "com.foo");
    EXPECT_EQ(package.packageName(), "com.foo");
    EXPECT_EQ(package.version(), "1.0");
    EXPECT_EQ(package.maintainerName(), "me");
    EXPECT_FALSE(package.dependsList()) << "an empty depends field is no dependency";
}

TEST(CydiaFileTest, UnderscoresOfASectionBecomeBlanks) {
    EXPECT_EQ(CydiaFile("F\tcom.foo\t1\tme\tAddons_(SpringBoard)\t\tinstall ok installed").sectionName(),
              "Addons (SpringBoard)");
    EXPECT_EQ(CydiaFile("F\tcom.foo\t1\tme\t_Tweaks_\t\tinstall ok installed").sectionName(), "Tweaks");
}

TEST(CydiaFileTest, ShortLines) {
    const CydiaFile four("Foo\tcom.foo\t1.0\tme");
    EXPECT_FALSE(four.name());
    EXPECT_FALSE(four.packageName());

    const CydiaFile five("Foo\tcom.foo\t1.0\tme\tTweaks");
    EXPECT_EQ(five.name(), "Foo");
    EXPECT_EQ(five.packageName(), "com.foo");
    EXPECT_FALSE(five.version());
    EXPECT_FALSE(five.maintainerName());
    EXPECT_FALSE(five.sectionName());
    EXPECT_FALSE(five.dependsList());
    EXPECT_EQ(five.backupData(), "Foo\tcom.foo\t(null)\t(null)\t(null)\t(null)");
}

TEST(CydiaFileTest, RemovedPackagesWithConfigurationLeftBehindAreDropped) {
    EXPECT_FALSE(scanned("com.foo", "", "deinstall ok config-files").packageName());
    EXPECT_FALSE(scanned("com.foo", "", "deinstall ok config-files").name());
    EXPECT_TRUE(scanned("com.foo", "", "install ok installed").packageName());
    EXPECT_TRUE(scanned("com.foo", "", "install ok half-configured").packageName());
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
    const CydiaFile package = scanned("com.foo", "firmware (>= 4.0), a | b (>= 1), c");
    EXPECT_EQ(package.firmwareSpecs(), "firmware (>= 4.0)");
    EXPECT_THAT(*package.dependsList(), ElementsAre("a", "b", "c"));

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

TEST(CydiaFileTest, TheStoredLineReadsBackAsTheSameRecordWithoutTheFirmware) {
    const CydiaFile package = scanned("com.foo", "firmware (>= 4.0), b, a");
    EXPECT_EQ(package.backupData(), "Name\tcom.foo\t1.0\tme\tTweaks\ta,b");

    const CydiaFile stored(package.backupData());
    EXPECT_TRUE(stored.isEqual(package));
    EXPECT_EQ(stored.backupData(), package.backupData());
    EXPECT_THAT(*stored.dependsList(), ElementsAre("a", "b"));
    EXPECT_FALSE(stored.firmwareSpecs());
}

TEST(CydiaFileTest, AStoredLineEndsWithTheDependenciesAndNeverWithAStatus) {
    const CydiaFile package = scanned("com.foo", "deinstaller-kit (>= 1.0)");
    ASSERT_EQ(package.backupData(), "Name\tcom.foo\t1.0\tme\tTweaks\tdeinstaller-kit");

    const CydiaFile stored(package.backupData());
    EXPECT_EQ(stored.packageName(), "com.foo") << "a dependency is no removed package's status";
    EXPECT_EQ(stored.backupData(), package.backupData());
}

TEST(CydiaFileTest, AStoredLineWithoutDependenciesDependsOnAPackageNamedNull) {
    const CydiaFile package = scanned("com.foo");
    ASSERT_EQ(package.backupData(), "Name\tcom.foo\t1.0\tme\tTweaks\t(null)");

    const CydiaFile stored(package.backupData());
    EXPECT_THAT(*stored.dependsList(), ElementsAre("(null)"));
    EXPECT_TRUE(stored.dependsOnPackage("(null)"));
    EXPECT_EQ(stored.backupData(), package.backupData());
}

// ----- Comparing and describing

TEST(CydiaFileTest, EqualityIsByIdentifierAndVersionWithoutRegardToCase) {
    const CydiaFile package("Foo\tCom.Foo\t1.0A\tme\tTweaks\t\tinstall ok installed");
    EXPECT_TRUE(package.isEqual(CydiaFile("Other\tcom.foo\t1.0a\tyou\tThemes\tx\tinstall ok installed")));
    EXPECT_FALSE(package.isEqual(CydiaFile("Foo\tcom.foo\t1.0b\tme\tTweaks\t\tinstall ok installed")));
    EXPECT_FALSE(package.isEqual(CydiaFile("Foo\tcom.foo2\t1.0a\tme\tTweaks\t\tinstall ok installed")));
}

TEST(CydiaFileTest, NamesCompareWithoutRegardToCase) {
    const CydiaFile alpha("alpha\tz\t1\tme\tS\t\ti"), beta("Beta\ta\t1\tme\tS\t\ti"), upper("ALPHA\tb\t1\tme\tS\t\ti");
    EXPECT_TRUE(std::is_lt(alpha.compareByName(beta)));
    EXPECT_TRUE(std::is_gt(beta.compareByName(alpha)));
    EXPECT_TRUE(std::is_eq(alpha.compareByName(upper)));
}

TEST(CydiaFileTest, Description) {
    const CydiaFile package = scanned("com.foo", "firmware (>= 4.0)");
    package.setBackupSelected(true);
    EXPECT_EQ(package.description(), "com.foo (Name) - [v1.0] - Tweaks - {B:1|R0} - [TL:1] - {FW:firmware (>= 4.0)}");
    EXPECT_EQ(CydiaFile("Foo\tcom.foo\t1.0\tme\tTweaks").description(),
              "com.foo (Foo) - [v(null)] - (null) - {B:0|R0} - [TL:1] - {FW:N/A}");
}

TEST(CydiaFileTest, FeedValueNamesThePackageAndLinksItsSearchPage) {
    EXPECT_EQ(CydiaFile(kTweakLine).fbFeedValue(),
              "\"- Foo\":{\"text\":\"info\",\"href\":"
              "\"http://search.packages.example/cydia/search.php?search=com.foo&repo=all&where=All\"}");
    const std::string odd = CydiaFile("Say \"hi\"\tlib+x&y=1\t1\tme\tS\t\ti").fbFeedValue();
    EXPECT_EQ(odd,
              "\"- Say \\\"hi\\\"\":{\"text\":\"info\",\"href\":"
              "\"http://search.packages.example/cydia/search.php?search=lib%2Bx%26y%3D1&repo=all&where=All\"}")
        << "the fragment stays JSON and the link keeps its query";
}

// ----- Special packages

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

TEST(CydiaFileTest, TheThreeSpecialPackages) {
    struct Special {
        const char* identifier;
        bool (CydiaFile::*is)() const;
        bool (CydiaFile::*dependsOn)() const;
    };
    const Special specials[] = {
        {"com.bigboss.categories", &CydiaFile::isCategoriesPkg, &CydiaFile::dependsOnCategoriesPkg},
        {"libhide", &CydiaFile::isLibHidePkg, &CydiaFile::dependsOnLibHidePkg},
        {"com.larkmoor.iconreshuffle", &CydiaFile::isSBOrganizerPkg, &CydiaFile::dependsOnSBOrganizerPkg},
    };
    for (const Special& special : specials) {
        for (const Special& other : specials) {
            const bool same = &special == &other;
            const CydiaFile package = scanned(special.identifier);
            const CydiaFile dependent = scanned("com.foo", std::string(special.identifier) + ".rock");
            EXPECT_EQ((package.*other.is)(), same) << special.identifier << " / " << other.identifier;
            EXPECT_EQ((dependent.*other.dependsOn)(), same) << special.identifier << " / " << other.identifier;
        }
    }
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

TEST(CydiaFileTest, WithoutAFirmwareDependencyAPackageIsNotCompatible) {
    EXPECT_FALSE(scanned("com.foo", "mobilesubstrate").isFirmwareCompatible("8.1.2"));
}

// The numbers are the digits of each version, the one with fewer parts multiplied by the
// difference of the part counts (not by a power of ten), then compared as unsigned.
TEST(CydiaFileTest, FirmwareComparisonKeepsItsOddAlignment) {
    struct Case {
        const char* device;
        const char* firmwareNeed;
        bool compatible;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"8.1.2", "firmware (>= 3.0)", true},    // 812 against 30
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

// ----- Queries of the package database (the commands themselves run in the integration tests)

class CydiaFileQueryTest : public ::testing::Test {
protected:
    std::string fileNamed(const std::string& name) const { return TemporaryDirectory::path() + "/" + name; }

    test::TestFolder folder_;
    test::DeviceRootScope root_{folder_.path().string()};
    test::FakeServices services_;
};

TEST_F(CydiaFileQueryTest, TheDescriptionComesFromOneDpkgQueryIntoAFileNamedByThePackage) {
    CydiaFile package(kTweakLine);
    // The shell runs nothing here: the file is as dpkg-query would have left it.
    ASSERT_TRUE(FileManager::writeFile(fileNamed("com.foo"), "Does foo things\n more of them"));
    package.loadDescription();

    ASSERT_EQ(services_.shell.commands.size(), 1u);
    EXPECT_EQ(services_.shell.commands[0], "dpkg-query -W -f='${Description}' com.foo > " + fileNamed("com.foo"));
    EXPECT_EQ(package.note(), "Does foo things\n more of them");
    EXPECT_FALSE(FileManager::fileExists(fileNamed("com.foo")));
}

TEST_F(CydiaFileQueryTest, NoFileLeavesNoDescription) {
    test::CapturedLog log;
    CydiaFile package(kTweakLine);
    package.loadDescription();
    EXPECT_FALSE(package.note());
    EXPECT_TRUE(log.contains("Unable to load description from <" + fileNamed("com.foo") + ">"));
}

TEST_F(CydiaFileQueryTest, TheNameIsTrimmedAndAnEmptyOneIsNoName) {
    ASSERT_TRUE(FileManager::writeFile(fileNamed("com.foo"), "  Foo Deluxe\n"));
    EXPECT_EQ(CydiaFile::getNameWithPackageName("com.foo"), "Foo Deluxe");
    ASSERT_EQ(services_.shell.commands.size(), 1u);
    EXPECT_EQ(services_.shell.commands[0], "dpkg-query -W -f='${name}' com.foo > \"" + fileNamed("com.foo") + "\"");
    EXPECT_FALSE(FileManager::fileExists(fileNamed("com.foo")));

    ASSERT_TRUE(FileManager::writeFile(fileNamed("com.bar"), " \n"));
    EXPECT_FALSE(CydiaFile::getNameWithPackageName("com.bar"));
    EXPECT_FALSE(CydiaFile::getNameWithPackageName("com.missing"));
    EXPECT_FALSE(CydiaFile::getNameWithPackageName(std::nullopt));
    EXPECT_EQ(services_.shell.commands.size(), 3u) << "nil runs nothing";
}

TEST_F(CydiaFileQueryTest, AnIdentifierThatIsNoPackageNameRunsNothing) {
    test::CapturedLog log;
    for (const char* identifier : {"com.foo; rm -rf /", "$(reboot)", "a b", "-foo", "`id`"}) {
        EXPECT_FALSE(CydiaFile::getNameWithPackageName(identifier)) << identifier;
        CydiaFile package("Foo\t" + std::string(identifier) + "\t1\tme\tS\t\tinstall ok installed");
        ASSERT_TRUE(package.packageName()) << identifier;
        package.loadDescription();
        EXPECT_FALSE(package.note()) << identifier;
    }
    EXPECT_TRUE(services_.shell.commands.empty());
    EXPECT_TRUE(log.contains("Refusing package identifier"));
}

TEST_F(CydiaFileQueryTest, IdentifiersThatNameFoldersNeverRemoveThem) {
    const std::string temporary = TemporaryDirectory::path();
    ASSERT_TRUE(FileManager::writeFile(temporary + "/keep", "x"));
    EXPECT_FALSE(CydiaFile::getNameWithPackageName("."));
    EXPECT_FALSE(CydiaFile::getNameWithPackageName(".."));
    EXPECT_TRUE(FileManager::fileExists(temporary + "/keep"));
}

}  // namespace
}  // namespace stowhaven
