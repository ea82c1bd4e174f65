// How a whole restore is put together and how it ends, whatever the session held.

#include "support/OperationRun.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "restore/AppStoreAppsRestoreOperation.h"
#include "restore/ArchivableFolderRestoreOperation.h"
#include "restore/IndexedDataRestoreOperation.h"
#include "restore/PackagesRestoreOperation.h"
#include "restore/RestoreOperation.h"
#include "restore/SourcesRestoreOperation.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <typeinfo>
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

    static std::vector<std::string> kindsOf(const std::vector<std::shared_ptr<DataRestoreOperation>>& operations) {
        std::vector<std::string> kinds;
        for (const auto& operation : operations) kinds.emplace_back(typeid(*operation).name());
        return kinds;
    }

    template <typename... Operations>
    static std::vector<std::string> kinds() {
        return {typeid(Operations).name()...};
    }

    test::SandboxDevice device_{"minimal"};
    test::SupervisorScope scope_;
    std::shared_ptr<LocalStorageHelper> engine_;
    std::shared_ptr<BackupSession> session_ = std::make_shared<BackupSession>();
};

TEST_F(RestoreOperationTest, SourcesAndPackagesAlwaysComeFirstAndFilesOnlyFromFileEngines) {
    session_->setAppDataIndexed(false);
    EXPECT_EQ(kindsOf(RestoreOperation::restoreOperationsFor(*session_)),
              (kinds<SourcesRestoreOperation, PackagesRestoreOperation, AppStoreAppsRestoreOperation,
                     ArchivableFolderRestoreOperation>()))
        << "no indexed data without its mark";
    session_->setAppDataIndexed(true);
    EXPECT_EQ(kindsOf(RestoreOperation::restoreOperationsFor(*session_)),
              (kinds<SourcesRestoreOperation, PackagesRestoreOperation, IndexedDataRestoreOperation,
                     AppStoreAppsRestoreOperation, ArchivableFolderRestoreOperation>()));

    scope_.supervisor().setStorageToAddressbook();
    EXPECT_EQ(kindsOf(RestoreOperation::restoreOperationsFor(*session_)),
              (kinds<SourcesRestoreOperation, PackagesRestoreOperation>()));
}

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
