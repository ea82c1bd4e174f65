#pragma once

#include "items/SelectableItem.h"
#include "platform/Date.h"

#include <cstdint>
#include <optional>
#include <string>

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

    // Both folders together, in bytes, as last measured.
    double totalBytes() const { return totalBytes_; }
    void setTotalBytes(double bytes) { totalBytes_ = bytes; }
    // Both folders together, in megabytes.
    double totalSize() const;

private:
    // Documents and Library from their sizes and units.
    double bytesOfFolders() const;

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
