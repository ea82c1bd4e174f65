#include "core/CydiaFile.h"

#include "core/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace stowhaven {

using textutil::orNull;
using textutil::split;
using textutil::trimmed;

namespace {

// Packages the system leaves alone: itself, the system's own pseudo-packages and Cydia.
constexpr std::array kRefusedPrefixes = {"gsc.", "base", "cy+", "firmware-sbin", "zip", "unzip"};
constexpr std::array kRefusedIdentifiers = {"com.larkmoor.stowhaven", "cydia", "cydia-lproj", "firmware"};

bool isRefused(const std::string& identifier) {
    return std::any_of(kRefusedPrefixes.begin(), kRefusedPrefixes.end(),
                       [&](std::string_view prefix) { return identifier.starts_with(prefix); }) ||
           std::find(kRefusedIdentifiers.begin(), kRefusedIdentifiers.end(), identifier) != kRefusedIdentifiers.end();
}

constexpr std::string_view kRockSuffix = ".rock";

bool isNameOrRock(const std::string& candidate, std::string_view name) {
    return candidate == name || (candidate.size() == name.size() + kRockSuffix.size() && candidate.starts_with(name) &&
                                 candidate.ends_with(kRockSuffix));
}

constexpr std::string_view kCategoriesPackage = "com.bigboss.categories";
constexpr std::string_view kLibHidePackage = "libhide";
constexpr std::string_view kSBOrganizerPackage = "com.larkmoor.iconreshuffle";

}  // namespace

CydiaFile::CydiaFile(const std::string& line) {
    const std::vector<std::string> fields = split(line, '\t');
    if (fields.size() < 5) return;
    name_ = trimmed(fields[0]);
    packageName_ = trimmed(fields[1]);
    if (name_->empty()) name_ = packageName_;
    if (isRefused(*packageName_)) {
        name_.reset();
        packageName_.reset();
        return;
    }
    if (fields.size() < 6) return;
    // A scan line ends with dpkg's status, a stored line with the dependencies: a removed
    // package that left its configuration files behind is no package to keep.
    if (fields.size() >= 7 && fields.back().starts_with("deinstall")) {
        name_.reset();
        packageName_.reset();
        note_.reset();
        return;
    }
    readFields(fields);
}

void CydiaFile::readFields(const std::vector<std::string>& fields) {
    version_ = trimmed(fields[2]);
    maintainerName_ = trimmed(fields[3]);
    std::string section = fields[4];
    std::replace(section.begin(), section.end(), '_', ' ');
    sectionName_ = trimmed(section);
    readDepends(fields[5]);
}

void CydiaFile::readDepends(const std::string& depends) {
    std::vector<std::string> names;
    for (const std::string& entry : split(depends, ',')) {
        for (const std::string& piece : split(trimmed(entry), '|')) {
            std::string alternative = trimmed(piece);
            if (alternative.starts_with("firmware")) {
                firmwareSpecs_ = std::move(alternative);
                continue;
            }
            std::string name = trimmed(alternative.substr(0, alternative.find(' ')));
            if (!name.empty()) names.push_back(std::move(name));
        }
    }
    if (names.empty()) return;
    std::sort(names.begin(), names.end());
    dependsList_ = std::move(names);
}

std::string CydiaFile::backupData() const {
    const std::optional<std::string> depends =
        dependsList_ ? std::optional(fmt::format("{}", fmt::join(*dependsList_, ","))) : std::nullopt;
    return fmt::format("{}\t{}\t{}\t{}\t{}\t{}", orNull(name_), orNull(packageName_), orNull(version_),
                       orNull(maintainerName_), orNull(sectionName_), orNull(depends));
}

bool CydiaFile::isEqual(const CydiaFile& other) const {
    const auto same = [](const std::optional<std::string>& left, const std::optional<std::string>& right) {
        return left && right ? textutil::caseInsensitiveOrder(*left, *right) == 0 : left == right;
    };
    return same(packageName_, other.packageName_) && same(version_, other.version_);
}

std::weak_ordering CydiaFile::compareByName(const CydiaFile& other) const {
    return textutil::caseInsensitiveOrder(name_.value_or(""), other.name_.value_or(""));
}

std::string CydiaFile::description() const {
    return fmt::format("{} ({}) - [v{}] - {} - {{B:{:d}|R{:d}}} - [TL:{:d}] - {{FW:{}}}", orNull(packageName_),
                       orNull(name_), orNull(version_), orNull(sectionName_), backupSelected_, restoreSelected_,
                       topLevel_, firmwareSpecs_.value_or("N/A"));
}

bool CydiaFile::isPackageNamed(std::string_view name) const {
    return packageName_ && isNameOrRock(*packageName_, name);
}

bool CydiaFile::dependsOnPackage(std::string_view name) const {
    return dependsList_ && std::any_of(dependsList_->begin(), dependsList_->end(),
                                       [&](const std::string& entry) { return isNameOrRock(entry, name); });
}

bool CydiaFile::isCategoriesPkg() const { return isPackageNamed(kCategoriesPackage); }
bool CydiaFile::dependsOnCategoriesPkg() const { return dependsOnPackage(kCategoriesPackage); }
bool CydiaFile::isLibHidePkg() const { return isPackageNamed(kLibHidePackage); }
bool CydiaFile::dependsOnLibHidePkg() const { return dependsOnPackage(kLibHidePackage); }
bool CydiaFile::isSBOrganizerPkg() const { return isPackageNamed(kSBOrganizerPackage); }
bool CydiaFile::dependsOnSBOrganizerPkg() const { return dependsOnPackage(kSBOrganizerPackage); }

bool CydiaFile::isSuccessfullyInstalled() const {
    return installLog_ &&
           textutil::containsCaseInsensitive(*installLog_, fmt::format("Setting up {}", orNull(packageName_)));
}

// The device's apt-get ends the sentence at "version."; later ones name the version first,
// "version (2.2.3).".
bool CydiaFile::isAlreadyInstalled() const {
    if (!installLog_) return false;
    const std::string sentence = fmt::format("{} is already the newest version", orNull(packageName_));
    return textutil::containsCaseInsensitive(*installLog_, sentence + ".") ||
           textutil::containsCaseInsensitive(*installLog_, sentence + " (");
}

}  // namespace stowhaven
