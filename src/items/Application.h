#pragma once

#include "items/DataContainers.h"
#include "items/SelectableItem.h"
#include "platform/Date.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// An App Store application whose data can be backed up: its Documents and Library
// folders, each measured in a unit of its own (0 bytes, 1 Kb, 2 Mb, 3 Gb, 4 Tb).
class Application : public SelectableItem {
public:
    // A folder size that was not measured.
    static constexpr double kUnmeasuredDirSize = -1.0;

    // NAME is the bundle's folder name without ".app". Both folders included, unmeasured.
    explicit Application(std::string name);
    // The archived fields; a folder is included when it has a size, and the item is not
    // selected.
    explicit Application(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override { return {"Application", "SelectableItem", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    std::string displayName() const override { return displayName_.value_or(name()); }
    const std::optional<std::string>& displayNameField() const { return displayName_; }
    void setDisplayName(std::optional<std::string> displayName) { displayName_ = std::move(displayName); }
    const std::optional<std::string>& bundleIdentifier() const { return bundleIdentifier_; }
    void setBundleIdentifier(std::optional<std::string> identifier) { bundleIdentifier_ = std::move(identifier); }
    const std::optional<std::string>& iconPath() const { return iconPath_; }
    void setIconPath(std::optional<std::string> path) { iconPath_ = std::move(path); }
    const std::optional<std::string>& homePath() const { return homePath_; }
    void setHomePath(std::optional<std::string> path) { homePath_ = std::move(path); }
    const std::optional<std::string>& libraryPath() const { return libraryPath_; }
    void setLibraryPath(std::optional<std::string> path) { libraryPath_ = std::move(path); }
    const std::optional<std::string>& documentPath() const { return documentPath_; }
    void setDocumentPath(std::optional<std::string> path) { documentPath_ = std::move(path); }
    const std::optional<Date>& installDate() const { return installDate_; }
    void setInstallDate(std::optional<Date> date) { installDate_ = date; }

    bool isInstalled() const { return fInstalled_; }
    void setIsInstalled(bool installed) { fInstalled_ = installed; }
    bool hasDocumentsDir() const { return fDocumentsDir_; }
    void setIncludeDocumentsData(bool include) { fDocumentsDir_ = include; }
    bool hasLibraryDir() const { return fLibraryDir_; }
    void setIncludeLibraryData(bool include) { fLibraryDir_ = include; }

    double documentsDirSize() const { return documentsDirSize_; }
    void setDocumentsDirSize(double size) { documentsDirSize_ = size; }
    std::int32_t documentsDirSizeUnit() const { return documentsDirSizeUnit_; }
    void setDocumentsDirSizeUnit(std::int32_t unit) { documentsDirSizeUnit_ = unit; }
    double libraryDirSize() const { return libraryDirSize_; }
    void setLibraryDirSize(double size) { libraryDirSize_ = size; }
    std::int32_t libraryDirSizeUnit() const { return libraryDirSizeUnit_; }
    void setLibraryDirSizeUnit(std::int32_t unit) { libraryDirSizeUnit_ = unit; }

    // The archive of its data: the name URL-encoded, with the extension "tbz".
    std::string archiveName() const;

    // Selects it with both folders, or deselects it with neither.
    void select();
    void deselect();

    // The name of its container folder: the next-to-last component of its home path.
    std::optional<std::string> getAppId() const;
    // Takes the paths of the same application as found on the device.
    void replacePathUsingApplication(const Application& installed);

    // Where its Documents and Library folders are, among the data containers of a device
    // whose data lives apart from the bundles.
    void findDocsAndLibsDirs(const DataContainers& dataContainers);
    // Finds and measures both folders (a folder not found counts 0), works out the total
    // and the install date. DATA CONTAINERS are none on a device that keeps data beside
    // the bundle.
    void setDocsAndLibsDirSizes(const DataContainers& dataContainers);

    // Both folders together, in bytes, as last measured.
    double totalBytes() const { return totalBytes_; }
    void setTotalBytes(double bytes) { totalBytes_ = bytes; }
    // Both folders together, in megabytes; measured first if a folder is not yet.
    double totalSize();
    // "12.5Mb (Docs:12.000Mb, Library:512.000Kb)", and why it can't be restored where so.
    std::string detailString() const;

    // The default choice of applications and of their folders, by side; an application the
    // backup list doesn't name is left out, one the restore list names is taken.
    void selectIfBackupDefault();
    void selectIfRestoreDefault();
    // Reads the two default lists again from the settings.
    static void initializeDefaults();

    // "b", "Kb", "Mb", "Gb", "Tb" by unit number, and back by the first letter.
    static std::string unitToString(std::int32_t unit);
    static std::int32_t stringToUnit(std::string_view unit);

    // Whether the device keeps application data in containers apart from the bundles, as
    // from system version 8.
    static bool hasDataContainers();

private:
    // Documents and Library from their sizes and units.
    double bytesOfFolders() const;
    // Folder flags and selection from a default list's entry for this application.
    void applyDefaultEntry(bool backupSide);

    bool fInstalled_ = false;
    bool fDocumentsDir_ = true;
    bool fLibraryDir_ = true;
    std::int32_t documentsDirSizeUnit_ = 0;
    std::int32_t libraryDirSizeUnit_ = 0;
    double totalBytes_ = 0;
    std::optional<std::string> displayName_;
    std::optional<std::string> iconPath_;
    std::optional<std::string> homePath_;
    std::optional<std::string> libraryPath_;
    std::optional<std::string> documentPath_;
    std::optional<std::string> bundleIdentifier_;
    std::optional<Date> installDate_;
    double documentsDirSize_ = kUnmeasuredDirSize;
    double libraryDirSize_ = kUnmeasuredDirSize;
};

}  // namespace stowhaven
