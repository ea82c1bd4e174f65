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

// The data folders go back to the user "mobile" in one fixed order after every restore,
// and the screens hear of the end.
TEST_F(RestoreOperationTest, EveryRestoreEndsByGivingTheDataFoldersBackToMobile) {
    std::atomic<int> done = 0;
    const auto observer = NotificationCenter::defaultCenter().addObserver("RESTORE_DONE", nullptr,
                                                                          [&done](const Notification&) { ++done; });

    runOperation(std::make_shared<RestoreOperation>());
    NotificationCenter::defaultCenter().removeObserver(observer);

    CydiaFileManager::shared().waitForCleanUpJobs();
    std::vector<std::string> owners;
    for (const std::string& command : scope_.services.shell.commands) {
        if (command.starts_with("chown -R mobile:mobile")) owners.push_back(command.substr(23));
    }
    const auto at = [this](const std::string& path) { return "\"" + device_.path(path) + "\""; };
    ASSERT_EQ(owners.size(), 14U);
    EXPECT_EQ(owners[0], at("/var/mobile/Library/Calendar"));
    EXPECT_EQ(owners[6], at("/var/mobile/Media/DCIM") + " " + at("/var/mobile/Media/PhotoData"));
    EXPECT_EQ(owners[8], at("/var/mobile/Library/Notes"));
    EXPECT_EQ(owners[13], at("/var/mobile/Library/Keyboard/UserDictionary.sqlite"));
    EXPECT_EQ(done, 1);
}

}  // namespace
}  // namespace stowhaven
