#pragma once

#include "storage/AbstractStorageHelper.h"

#include <memory>
#include <optional>
#include <string>

namespace stowhaven::test {

// An engine whose operations do nothing, for doubles that give a few of them a meaning.
class NullStorageEngine : public AbstractStorageHelper {
public:
    using AbstractStorageHelper::AbstractStorageHelper;

    void flushCache() override {}
    void resetAll() override {}
    void loadAvailableDeviceBackups() override {}
    void loadBackupDetailsForDevice(const std::string&) override {}
    void loadMostRecentBackupSession() override {}
    void loadFile(const std::string&, Date, const std::optional<std::string>&) override {}
    void createDirectoryDated(Date) override {}
    void createDirectory(const std::string&, Date) override {}
    void uploadBackupHistory(const std::string&, Date) override {}
    void uploadFile(const std::string&, Date, const std::optional<std::string>&) override {}
    void deleteBackupSession(const std::shared_ptr<BackupSession>&) override {}
    void deleteBackupForDeviceId(const std::string&) override {}
    void moveFromPath(const std::string&, const std::string&) override {}
    double freeSpace() override { return 0; }
    void refreshFreeSpace() override {}
    std::int32_t fileSizeUploadLimit() override { return 0; }
    void showProgressOnView() override {}
    void hideProgress() override {}

protected:
    bool fetchHistoryFile(const std::string&) override { return false; }
};

}  // namespace stowhaven::test
