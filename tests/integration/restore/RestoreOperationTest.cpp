// How a whole restore ends, whatever the session held.

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "restore/RestoreOperation.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/OperationRun.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

class RestoreOperationTest : public ::testing::Test {
protected:
    RestoreOperationTest() : scope_(device_.root()) {
        gIsBackupMode = false;
        LocalStorageHelper::settleStoragePath();
        engine_ = LocalStorageHelper::createLocalStorageHelper();
        session_->setSessionDate(Date(760000000.0));
        CydiaFileManager::shared().processBackupData({session_}, false);
        CydiaFileManager::shared().changeCurrentBackupSessionTo(session_);
    }

    test::SandboxDevice device_{"minimal"};
    test::SupervisorScope scope_;
    std::shared_ptr<LocalStorageHelper> engine_;
    std::shared_ptr<BackupSession> session_ = std::make_shared<BackupSession>();
};

// The data folders go back to the user "mobile" after every restore, even one with nothing
// chosen, and the screens hear of the end.
TEST_F(RestoreOperationTest, EveryRestoreEndsByGivingTheDataFoldersBackToMobile) {
    std::atomic<int> done = 0;
    const auto observer = NotificationCenter::defaultCenter().addObserver("RESTORE_DONE", nullptr,
                                                                          [&done](const Notification&) { ++done; });

    runOperation(std::make_shared<RestoreOperation>());
    NotificationCenter::defaultCenter().removeObserver(observer);

    CydiaFileManager::shared().waitForCleanUpJobs();
    const auto& commands = scope_.services.shell.commands;
    for (const char* folder : {"/var/mobile/Library/Calendar", "/var/mobile/Library/Notes"}) {
        const std::string command = "chown -R mobile:mobile \"" + device_.path(folder) + "\"";
        EXPECT_NE(std::find(commands.begin(), commands.end(), command), commands.end()) << folder;
    }
    EXPECT_EQ(done, 1);
}

}  // namespace
}  // namespace stowhaven
