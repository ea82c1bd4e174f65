#pragma once

#include "backup/DataBackupOperation.h"

namespace stowhaven {

// The chosen preference files, in an archive that always starts with the package
// manager's own settings file, chosen or not.
class PreferencesFileBackupOperation final : public DataBackupOperation {
public:
    void main() override;

protected:
    bool zipDataWithCompression(bool compressed) override;
};

// The chosen SpringBoard files; with none chosen there is nothing to archive and no index.
class SpringboardFileBackupOperation final : public DataBackupOperation {
public:
    void main() override;

protected:
    bool zipDataWithCompression(bool compressed) override;
};

}  // namespace stowhaven
