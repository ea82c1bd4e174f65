#pragma once

#include "restore/DataRestoreOperation.h"

#include <cstdint>
#include <memory>
#include <string>

namespace stowhaven {

class CydiaFile;

// Brings the session's packages back. From a repository: apt-get installs each package
// chosen for restore, up to five times until its output says it is installed or was
// already, and the package joins the device's list. From the storage (with .deb restore
// on and a file storage): the .deb files of the session's "DEBS" folder are fetched one
// by one and installed with dpkg. What apt-get or dpkg said stays in each package's
// installLog. Last, the device's own package database is read: a selected package that
// is still not installed is marked missing, whatever its log says.
//
// Package identifiers stand unquoted in the command lines: one that is not a package name
// never reaches a command.
class PackagesRestoreOperation final : public DataRestoreOperation {
public:
    void main() override;

    // The number of packages chosen for restore, as counted when the operation started.
    std::int64_t nbPackages() const { return nbPackages_; }

private:
    void restore();
    void restorePackagesFromCydia();
    // Installs one package and answers whether it was tried at all.
    void installPackage(const std::shared_ptr<CydiaFile>& package);
    // Fetches the .deb files one after the other, then installs them.
    void restorePackagesFromDebs();
    // Fetches the next package's file; false once there is nothing more to fetch.
    bool fetchNextDeb();
    void installLocalDebs();
    void markPackagesStillMissing();
    bool stopsForCancel() const;

    std::int64_t nbPackages_ = 0;
};

}  // namespace stowhaven
