#include "core/PackageSection.h"

#include "core/Text.h"

#include <algorithm>

namespace stowhaven {

namespace {

constexpr const char* kNoSectionName = "(No Section)";

}  // namespace

PackageSection::PackageSection(const std::optional<std::string>& name) : name_(name.value_or(kNoSectionName)) {}

std::vector<std::shared_ptr<PackageSection>> PackageSection::sectionsOf(const Packages& packages) {
    std::vector<std::shared_ptr<PackageSection>> sections;
    for (const auto& package : packages) {
        if (!package->isTopLevel()) continue;
        const std::string name = package->sectionName().value_or(kNoSectionName);
        auto section = std::find_if(sections.begin(), sections.end(),
                                    [&](const auto& candidate) { return candidate->name() == name; });
        if (section == sections.end()) {
            section = sections.insert(sections.end(), std::make_shared<PackageSection>(name));
        }
        (*section)->addPackage(package);
    }
    // A sort needn't ask every section to compare (one section alone is never asked), so
    // each sorts its packages here first.
    for (const auto& section : sections) section->sortPackages();
    std::sort(sections.begin(), sections.end(),
              [](const auto& left, const auto& right) { return left->compare(*right) < 0; });
    return sections;
}

std::weak_ordering PackageSection::compare(const PackageSection& other) {
    sortPackages();
    return textutil::caseInsensitiveOrder(name_, other.name_);
}

void PackageSection::sortPackages() {
    std::stable_sort(packages_.begin(), packages_.end(),
                     [](const auto& left, const auto& right) { return left->compareByName(*right) < 0; });
}

}  // namespace stowhaven
