#pragma once

#include "core/CydiaFile.h"

#include <compare>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The packages of one dpkg section, as the selection screens list them.
class PackageSection {
public:
    using Packages = std::vector<std::shared_ptr<CydiaFile>>;
    // A getter of a package's selection flag, such as &CydiaFile::isBackupSelected.
    using PackageState = bool (CydiaFile::*)() const;

    // A section without a name is "(No Section)".
    explicit PackageSection(const std::optional<std::string>& name);

    // Groups the top-level packages into sections by their exact section name and sorts
    // the sections by name, and the packages of every section by theirs.
    static std::vector<std::shared_ptr<PackageSection>> sectionsOf(const Packages& packages);

    const std::string& name() const { return name_; }
    const Packages& packages() const { return packages_; }
    void addPackage(std::shared_ptr<CydiaFile> package) { packages_.push_back(std::move(package)); }

    // Sorts this section's packages by name, then answers the order of the two sections'
    // names without regard to case. So sorting sections sorts the packages of those
    // sections that the sort compares.
    std::weak_ordering compare(const PackageSection& other);
    void sortPackages();

private:
    std::string name_;
    Packages packages_;
};

}  // namespace stowhaven
