#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// One Cydia package: read from the device's package database (a scan line of seven
// tab-separated fields: name, identifier, version, maintainer, section, depends, status)
// or from a stored session (the first six, as backupData() writes them). A line the
// system won't handle still gives an object, with no packageName.
//
// Records are shared (std::shared_ptr) between the device's list and a session's list,
// so the selection flags are kept per record and may change on a shared record.
class CydiaFile {
public:
    explicit CydiaFile(const std::string& line);

    // The stored line: six fields, a nil one printed as "(null)", depends joined with ",".
    // The firmware dependency is not part of it.
    std::string backupData() const;

    // Same identifier and same version, both without regard to case.
    bool isEqual(const CydiaFile& other) const;
    std::weak_ordering compareByName(const CydiaFile& other) const;
    std::string description() const;

    // Fills note() with the package's description from the device's package database.
    void loadDescription();
    // The display name of an installed package; nothing for nil, for a package that isn't
    // installed and for one without a Name.
    static std::optional<std::string> getNameWithPackageName(const std::optional<std::string>& packageName);

    // The identifier is NAME, or NAME with ".rock" appended.
    bool isPackageNamed(std::string_view name) const;
    // A dependency is NAME, or NAME with ".rock" appended.
    bool dependsOnPackage(std::string_view name) const;
    bool isCategoriesPkg() const;
    bool dependsOnCategoriesPkg() const;
    bool isLibHidePkg() const;
    bool dependsOnLibHidePkg() const;
    bool isSBOrganizerPkg() const;
    bool dependsOnSBOrganizerPkg() const;

    // What the install step's output tells of this package.
    bool isSuccessfullyInstalled() const;
    bool isAlreadyInstalled() const;

    // Whether the device's system version (such as "8.1.2") meets firmwareSpecs(). Without
    // a firmware dependency the answer is false.
    bool isFirmwareCompatible(const std::string& deviceSystemVersion) const;

    bool isBackupSelected() const { return backupSelected_; }
    void setBackupSelected(bool selected) const { backupSelected_ = selected; }
    bool isRestoreSelected() const { return restoreSelected_; }
    void setRestoreSelected(bool selected) const { restoreSelected_ = selected; }
    bool isTopLevel() const { return topLevel_; }
    const std::optional<std::string>& installLog() const { return installLog_; }
    void setInstallLog(std::optional<std::string> log) { installLog_ = std::move(log); }
    // Selected for the restore, and not installed on the device once the restore ended,
    // whatever its install log says.
    bool isMissingAfterRestore() const { return missingAfterRestore_; }
    void setMissingAfterRestore(bool missing) { missingAfterRestore_ = missing; }

    const std::optional<std::string>& name() const { return name_; }
    const std::optional<std::string>& packageName() const { return packageName_; }
    const std::optional<std::string>& version() const { return version_; }
    const std::optional<std::string>& maintainerName() const { return maintainerName_; }
    const std::optional<std::string>& sectionName() const { return sectionName_; }
    const std::optional<std::string>& note() const { return note_; }
    // The whole firmware dependency, such as "firmware (>= 3.0)".
    const std::optional<std::string>& firmwareSpecs() const { return firmwareSpecs_; }
    // Names of the packages depended on, sorted; nothing when there are none.
    const std::optional<std::vector<std::string>>& dependsList() const { return dependsList_; }

private:
    void readFields(const std::vector<std::string>& fields);
    void readDepends(const std::string& depends);

    mutable bool backupSelected_ = false;
    mutable bool restoreSelected_ = false;
    bool topLevel_ = true;
    bool missingAfterRestore_ = false;
    std::optional<std::string> installLog_;
    std::optional<std::string> name_;
    std::optional<std::string> packageName_;
    std::optional<std::string> version_;
    std::optional<std::string> maintainerName_;
    std::optional<std::string> sectionName_;
    std::optional<std::string> note_;
    std::optional<std::string> firmwareSpecs_;
    std::optional<std::vector<std::string>> dependsList_;
};

}  // namespace stowhaven
