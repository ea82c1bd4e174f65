// How a whole backup closes after a failure: what it takes away. (The address book's run
// stands in the address book's program test.)

#include "backup/BackupOperation.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "platform/Strings.h"
#include "storage/StorageEngines.h"
#include "support/NullStorageEngine.h"
#include "support/OperationRun.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// An engine that refuses to store a history file and notes what it is asked to delete.
class RefusingEngine final : public test::NullStorageEngine {
public:
    std::optional<std::string> errorMessage() const override { return "The storage is full"; }
    void deleteBackupSession(const std::shared_ptr<BackupSession>& session) override { deleted.push_back(session); }
    std::vector<std::shared_ptr<BackupSession>> deleted;
};

class BackupOperationTest : public ::testing::Test {
protected:
    BackupOperationTest() : scope_(device_.root()) {
        gAutoScanPkgEnabled = true;
        gAutoScanStockAppsEnabled = true;
        progressObserver_ = NotificationCenter::defaultCenter().addObserver(
            "UPDATE_PROGRESS_TEXT", nullptr, [this](const Notification& notice) {
                if (const auto* text = std::any_cast<std::string>(&notice.object)) texts_.push_back(*text);
            });
    }
    ~BackupOperationTest() override { NotificationCenter::defaultCenter().removeObserver(progressObserver_); }

    static CydiaFileManager& manager() { return CydiaFileManager::shared(); }

    bool showed(const std::string& key) const {
        return std::find(texts_.begin(), texts_.end(), Strings::localized(key)) != texts_.end();
    }

    test::SandboxDevice device_{"minimal"};
    test::SupervisorScope scope_;
    std::vector<std::string> texts_;

private:
    NotificationCenter::ObserverToken progressObserver_{};
};

// The refused record goes from the catalogue and from the storage, but the backup before it
// stays, however many times the closing runs.
TEST_F(BackupOperationTest, AFailedBackupOnTheDefaultStorageTakesOnlyItsOwnRecordAway) {
    const auto engine = std::make_shared<RefusingEngine>();
    StorageEngines::registerFactory(StorageType::Local, [engine] { return engine; });
    StorageEngines::create(StorageType::Local);
    scope_.supervisor().setStorageToLocal();
    manager().loadPackages();
    scope_.services.clock.time = std::chrono::system_clock::from_time_t(1795000000);
    auto earlier = std::make_shared<BackupSession>();
    earlier->setSessionDate(Date(700000000));
    manager().processBackupData({earlier}, false);

    runOperation(std::make_shared<BackupOperation>());
    // A second failure notice, as an engine may post, reaches the same run.
    NotificationCenter::defaultCenter().post("BACKUP_FAILED");
    scope_.serveMainQueue();

    ASSERT_EQ(manager().backupSessions().size(), 1U);
    EXPECT_EQ(manager().backupSessions().front(), earlier);
    ASSERT_EQ(engine->deleted.size(), 1U);
    EXPECT_NE(engine->deleted.front(), earlier);
    EXPECT_TRUE(showed("CLOUD_UPLOAD_FAILED"));
}

}  // namespace
}  // namespace stowhaven
