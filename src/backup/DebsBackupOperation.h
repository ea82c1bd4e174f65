#pragma once

#include "backup/DataBackupOperation.h"

#include <string>
#include <vector>

namespace stowhaven {

// The .deb file of every package of the session, fetched by apt-get into a cache of the
// program's own (TMP/debs) and stored unsplit, without an index, in the folder "DEBS", so
// that a restore needs no repository. Files are named as apt-get names them, in lower case
// with ":" as "_"; only the device's architecture is kept. What apt-get said of each
// package is collected in the error text, which no one takes for a failure. A package whose
// installed version no repository served is rebuilt from the device (PackageRepack) when
// the setting "RepackMissingDebsEnabled" is on, and named in that text and the backup's report.
class DebsBackupOperation final : public DataBackupOperation {
public:
    static constexpr const char* kArchitectureSuffix = "iphoneos-arm.deb";

    void main() override;

    // "name_1_2.3_iphoneos-arm.deb" for "Name_1:2.3_iphoneos-arm.deb".
    static std::string cleanedName(const std::string& fileName);
    // The full paths of the files to upload.
    const std::vector<std::string>& debsToUpload() const { return debsToUpload_; }

private:
    void createDebsDirectory();
    void downloadDebsFromCydia();
    // Each package line of the session: its display name and identifier.
    void downloadPackages(const std::string& cache);
    void collectDownloadedDebs(const std::string& archives);
    // The packages of the session whose file apt-get couldn't fetch under the name the
    // restore looks for, rebuilt from the device into ARCHIVES.
    void repackMissingDebs(const std::string& archives);
    void uploadDebs();

    std::vector<std::string> debsToUpload_;
};

}  // namespace stowhaven
