#pragma once

#include "items/SelectableItem.h"

#include <cstdint>
#include <string>

namespace stowhaven {

// An App Store application whose data can be backed up: its Documents and Library
// folders, each measured in a unit of its own (0 bytes, 1 Kb, 2 Mb, 3 Gb, 4 Tb).
class Application : public SelectableItem {
public:
    // A folder size that was not measured.
    static constexpr double kUnmeasuredDirSize = -1.0;

    // NAME is the bundle's folder name without ".app".
    explicit Application(std::string name);

    std::string displayName() const override { return displayName_; }
    void setDisplayName(std::string displayName) { displayName_ = std::move(displayName); }
    const std::string& bundleIdentifier() const { return bundleIdentifier_; }
    void setBundleIdentifier(std::string identifier) { bundleIdentifier_ = std::move(identifier); }

    double documentsDirSize() const { return documentsDirSize_; }
    void setDocumentsDirSize(double size) { documentsDirSize_ = size; }
    std::int32_t documentsDirSizeUnit() const { return documentsDirSizeUnit_; }
    void setDocumentsDirSizeUnit(std::int32_t unit) { documentsDirSizeUnit_ = unit; }
    double libraryDirSize() const { return libraryDirSize_; }
    void setLibraryDirSize(double size) { libraryDirSize_ = size; }
    std::int32_t libraryDirSizeUnit() const { return libraryDirSizeUnit_; }
    void setLibraryDirSizeUnit(std::int32_t unit) { libraryDirSizeUnit_ = unit; }

    // Both folders together, in bytes, as last measured.
    double totalBytes() const { return totalBytes_; }
    void setTotalBytes(double bytes) { totalBytes_ = bytes; }
    // Both folders together, in megabytes.
    double totalSize() const;

private:
    std::int32_t documentsDirSizeUnit_ = 0;
    std::int32_t libraryDirSizeUnit_ = 0;
    double totalBytes_ = 0;
    std::string displayName_;
    std::string bundleIdentifier_;
    double documentsDirSize_ = kUnmeasuredDirSize;
    double libraryDirSize_ = kUnmeasuredDirSize;
};

}  // namespace stowhaven
