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

// The program's listing shows the order of a real device; here the edges it has none of.
TEST(PackageSectionTest, SectionsGroupByExactNameAndSortThemselvesAndTheirPackagesWithoutRegardToCase) {
    const auto sections = PackageSection::sectionsOf(
        {package("b", "Tweaks"), package("q", "Addons (SpringBoard)"), package("a", "Tweaks"), package("m", "tweaks"),
         std::make_shared<CydiaFile>("F\tid.f\t1.0\tme\tS"), package("C", "Tweaks")});

    EXPECT_THAT(namesOf(sections), ElementsAre("(No Section)", "Addons (SpringBoard)", "Tweaks", "tweaks"));
    EXPECT_THAT(namesIn(sections[2]->packages()), ElementsAre("a", "b", "C"));
    EXPECT_THAT(namesIn(sections[3]->packages()), ElementsAre("m"));

    const auto alone = PackageSection::sectionsOf({package("b"), package("c"), package("a")});
    ASSERT_EQ(alone.size(), 1u);
    EXPECT_THAT(namesIn(alone[0]->packages()), ElementsAre("a", "b", "c")) << "a lone section is sorted too";
    EXPECT_THAT(PackageSection::sectionsOf({}), IsEmpty());
}

}  // namespace
}  // namespace stowhaven
