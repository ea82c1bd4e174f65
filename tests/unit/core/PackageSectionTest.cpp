#include "core/PackageSection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::shared_ptr<CydiaFile> package(const std::string& name, const std::string& section = "Tweaks") {
    return std::make_shared<CydiaFile>(name + "\tid." + name + "\t1.0\tme\t" + section + "\t\tinstall ok installed");
}

std::vector<std::string> namesIn(const PackageSection::Packages& packages) {
    std::vector<std::string> names;
    for (const auto& each : packages) names.push_back(*each->name());
    return names;
}

std::vector<std::string> namesOf(const std::vector<std::shared_ptr<PackageSection>>& sections) {
    std::vector<std::string> names;
    for (const auto& section : sections) names.push_back(section->name());
    return names;
}

TEST(PackageSectionTest, NameEqualityAndDescription) {
    PackageSection unnamed(std::nullopt);
    EXPECT_EQ(unnamed.name(), "(No Section)");
    EXPECT_EQ(unnamed.description(), "(No Section):0");

    PackageSection tweaks("Tweaks");
    tweaks.addPackage(package("a"));
    tweaks.addPackage(package("b"));
    EXPECT_EQ(tweaks.description(), "Tweaks:2");
    EXPECT_TRUE(tweaks.isEqual(PackageSection("Tweaks")));
    EXPECT_FALSE(tweaks.isEqual(PackageSection("tweaks")));
}

TEST(PackageSectionTest, CompareSortsItsOwnPackagesThenOrdersByNameWithoutRegardToCase) {
    PackageSection system("system"), tweaks("Tweaks");
    for (const char* name : {"zeta", "Beta", "alpha"}) system.addPackage(package(name));
    tweaks.addPackage(package("y"));
    tweaks.addPackage(package("x"));

    EXPECT_TRUE(std::is_lt(system.compare(tweaks)));
    EXPECT_THAT(namesIn(system.packages()), ElementsAre("alpha", "Beta", "zeta"));
    EXPECT_THAT(namesIn(tweaks.packages()), ElementsAre("y", "x")) << "only the section asked sorts";
    EXPECT_TRUE(std::is_gt(tweaks.compare(system)));
    EXPECT_TRUE(std::is_eq(system.compare(PackageSection("SYSTEM"))));
}

TEST(PackageSectionTest, SectionsOfGroupsByExactNameAndSortsEverything) {
    const auto sections = PackageSection::sectionsOf(
        {package("b", "Tweaks"), package("q", "Addons (SpringBoard)"), package("a", "Tweaks"), package("m", "tweaks"),
         package("z", "System"), package("C", "Tweaks")});

    EXPECT_THAT(namesOf(sections), ElementsAre("Addons (SpringBoard)", "System", "Tweaks", "tweaks"));
    EXPECT_THAT(namesIn(sections[2]->packages()), ElementsAre("a", "b", "C"));
    EXPECT_THAT(namesIn(sections[3]->packages()), ElementsAre("m"));
}

TEST(PackageSectionTest, ALoneSectionIsSortedToo) {
    const auto sections = PackageSection::sectionsOf({package("b"), package("c"), package("a")});
    ASSERT_EQ(sections.size(), 1u);
    EXPECT_THAT(namesIn(sections[0]->packages()), ElementsAre("a", "b", "c"));
}

TEST(PackageSectionTest, APackageWithoutSectionGoesUnderNoSection) {
    const auto sections =
        PackageSection::sectionsOf({std::make_shared<CydiaFile>("F\tid.f\t1.0\tme\tS"), package("g", "Tweaks")});
    EXPECT_THAT(namesOf(sections), ElementsAre("(No Section)", "Tweaks"));
    EXPECT_THAT(PackageSection::sectionsOf({}), IsEmpty());
}

TEST(PackageSectionTest, PackagesByState) {
    PackageSection section("Tweaks");
    EXPECT_FALSE(section.hasBackupablePackage());
    EXPECT_FALSE(section.hasRestorablePackage());
    EXPECT_EQ(section.countBackupablePackages(), 0u);

    for (const char* name : {"a", "b", "c"}) section.addPackage(package(name));
    section.packages()[1]->setBackupSelected(true);
    section.packages()[2]->setBackupSelected(true);
    EXPECT_TRUE(section.hasBackupablePackage());
    EXPECT_EQ(section.countBackupablePackages(), 2u);
    EXPECT_FALSE(section.hasRestorablePackage());
    EXPECT_EQ(section.countRestorablePackages(), 0u);

    section.packages()[0]->setRestoreSelected(true);
    EXPECT_TRUE(section.hasRestorablePackage());
    EXPECT_EQ(section.countRestorablePackages(), 1u);
}

TEST(PackageSectionTest, TheFilterKeepsWhatThePredicateLetsThroughInOrder) {
    PackageSection section("Tweaks");
    for (const char* name : {"apple", "banana", "avocado"}) section.addPackage(package(name));
    EXPECT_THAT(section.filteredPackages(), IsEmpty());

    section.setPackageFilter([](const CydiaFile& each) { return each.name()->starts_with("a"); });
    EXPECT_THAT(namesIn(section.filteredPackages()), ElementsAre("apple", "avocado"));
    EXPECT_EQ(section.filteredPackages()[0], section.packages()[0]) << "the same records, not copies";

    section.setPackageFilter([](const CydiaFile&) { return false; });
    EXPECT_THAT(section.filteredPackages(), IsEmpty());

    section.setPackageFilter(nullptr);
    EXPECT_THAT(namesIn(section.filteredPackages()), ElementsAre("apple", "banana", "avocado"));
}

}  // namespace
}  // namespace stowhaven
