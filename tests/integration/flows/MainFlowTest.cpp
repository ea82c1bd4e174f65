// The main flow driven through a scripted screen: what it loads at start, which questions it
// puts in which order, and which answers start which job, on a sandbox device backed up to
// local storage.

#include "core/CydiaFileManager.h"
#include "core/DataToImport.h"
#include "core/ProcessFlags.h"
#include "core/StowhavenAppDelegate.h"
#include "flows/MainAlerts.h"
#include "flows/MainViewController.h"
#include "platform/Strings.h"
#include "platform/dispatch/MainQueue.h"
#include "storage/StorageEngines.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/NullStorageEngine.h"
#include "support/RecordingMainScreen.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;
using Tag = MainAlerts::Tag;

// A network engine that never logs in, and counts the attempts.
class OfflineEngine final : public test::NullStorageEngine, public ConnectionOrientedStorageHelperProtocol {
public:
    void connect() override { ++connections; }
    void disconnect() override {}
    bool isLoggedIn() override { return false; }
    std::string accountName() override { return "nobody"; }
    int connections = 0;
};

class MainFlowTest : public ::testing::Test {
protected:
    MainFlowTest() : scope_(device_.root()) {
        scope_.supervisor();
        scope_.services.shell.runsCommands = true;
        gAutoScanPkgEnabled = true;
        LocalStorageHelper::settleStoragePath();
    }
    ~MainFlowTest() override {
        if (loadObserver_) NotificationCenter::defaultCenter().removeObserver(*loadObserver_);
        CydiaFileManager::shared().waitForCleanUpJobs();
    }

    // The screen's first appearance, up to the end of the first load when there is one.
    void start(bool expectLoad = true) {
        controller_ = MainViewController::create(screen_);
        controller_->viewDidLoad();
        // After the controller's own observer, so that the count moves once it has handled the load.
        loadObserver_ = NotificationCenter::defaultCenter().addObserver("DATA_LOADED", nullptr,
                                                                        [this](const Notification&) { ++loads_; });
        controller_->viewDidAppear();
        if (expectLoad) waitForLoads(1);
        scope_.serveMainQueue();
    }

    void waitForLoads(int count) {
        ASSERT_TRUE(MainQueue::shared().runUntil([&] { return loads_ >= count; }, 60s));
        scope_.serveMainQueue();
    }

    void waitForJobEnd() {
        ASSERT_TRUE(MainQueue::shared().runUntil([&] { return !screen_->working; }, 120s));
        scope_.serveMainQueue();
    }

    std::vector<int> tags() const {
        std::vector<int> tags;
        for (const auto& alert : alerts().alerts) tags.push_back(alert.tag);
        return tags;
    }

    test::RecordingAlertPresenter& alerts() const { return *scope_.screens.alerts; }
    const test::RecordingAlertPresenter::Shown& lastAlert() const { return alerts().alerts.back(); }

    // Answers the last alert, which must be the one of TAG.
    void answer(Tag tag, std::size_t button, std::optional<std::string> text = std::nullopt) {
        ASSERT_FALSE(alerts().alerts.empty());
        ASSERT_EQ(lastAlert().tag, tag);
        alerts().dismissLast(button, std::move(text));
        scope_.serveMainQueue();
    }

    void backUpWithKey(const std::string& key) {
        controller_->doOperation();
        scope_.serveMainQueue();
        answer(MainAlerts::kConfirmBackup, 1);
        answer(MainAlerts::kEncryptionKey, 1, key);
        answer(MainAlerts::kEncryptionKey, 1, key);
        waitForJobEnd();
        ASSERT_EQ(lastAlert().tag, MainAlerts::kBackupDone);
    }

    test::SandboxDevice device_{"minimal"};
    mutable test::SupervisorScope scope_;
    std::shared_ptr<test::RecordingMainScreen> screen_ = std::make_shared<test::RecordingMainScreen>();
    std::shared_ptr<MainViewController> controller_;
    std::atomic<int> loads_{0};
    std::optional<NotificationCenter::ObserverToken> loadObserver_;
};

TEST_F(MainFlowTest, WithEveryScanOffNothingLoadsAndYesOpensTheSettings) {
    gAutoScanPkgEnabled = false;
    start(false);

    EXPECT_EQ(tags(), std::vector<int>{MainAlerts::kNoScansEnabled});
    EXPECT_FALSE(screen_->jobButtonsEnabled);
    EXPECT_TRUE(controller_->isInitialState());
    CydiaFileManager::shared().waitForCleanUpJobs();
    const auto& commands = scope_.services.shell.commands;
    EXPECT_TRUE(std::none_of(commands.begin(), commands.end(),
                             [](const auto& line) { return line.find("dpkg-query") != std::string::npos; }));

    answer(MainAlerts::kNoScansEnabled, 1);
    ASSERT_EQ(screen_->opened.size(), 1U);
    EXPECT_EQ(screen_->opened[0], std::vector<FlowScreen>{FlowScreen::Settings});
}

TEST_F(MainFlowTest, ANetworkEngineWithoutNetworkGivesWayToLocalStorageAndTheLoadGoesOn) {
    const auto engine = std::make_shared<OfflineEngine>();
    StorageEngines::registerFactory(StorageType::FTP, [engine] { return engine; });
    scope_.supervisor().setStorageToFTP();
    scope_.services.reachability.connected = false;

    start();

    EXPECT_TRUE(scope_.supervisor().isStorageLocal());
    EXPECT_EQ(screen_->storage, "local storage");
    EXPECT_EQ(engine->connections, 0);
    EXPECT_FALSE(controller_->isInitialState());
    ASSERT_FALSE(alerts().alerts.empty());
    EXPECT_EQ(alerts().alerts[0].message, Strings::localized("NO_INTERNET_LOCAL_STORAGE_MESSAGE"));
    EXPECT_EQ(controller_->state(), MainViewController::State::IdleBackup);
}

TEST_F(MainFlowTest, AnAutomaticBackupHeldBackByARestrictionLeavesTheDataLoadedAndTheSettingInForce) {
    gAutobackupEnabled = true;  // for this run only, as the URL asks it
    gPluggedInDeviceOnly = true;
    scope_.services.battery.monitoring = true;
    scope_.services.battery.batteryState = BatteryState::Unplugged;

    start();

    EXPECT_FALSE(controller_->isAutomaticBackupPending()) << "no backup is on its way";
    EXPECT_EQ(screen_->jobsStarted, 0);
    EXPECT_FALSE(controller_->isInitialState());
    EXPECT_TRUE(controller_->isAutoBackupDone());
    EXPECT_FALSE(gAutobackupEnabled) << "read back from the stored setting";
    ASSERT_EQ(alerts().alerts.size(), 1U);
    EXPECT_EQ(lastAlert().title, Strings::localized("OPERATION_UNAVAILABLE_TITLE"));
    EXPECT_EQ(lastAlert().message, Strings::localized("DEVICE_PLUGGED_IN_MESSAGE"));
}

TEST_F(MainFlowTest, TwoDifferentKeysStartNothingAndTheFirstIsForgotten) {
    gEncryptBackupEnabled = true;
    gBackupTitleEnabled = false;
    gBackupDescriptionEnabled = false;
    start();

    controller_->doOperation();
    scope_.serveMainQueue();
    answer(MainAlerts::kConfirmBackup, 1);
    EXPECT_EQ(lastAlert().message, Strings::localized("ENCRYPTION_KEY_MESSAGE"));
    EXPECT_EQ(lastAlert().field, Alert::Field::Secure);
    answer(MainAlerts::kEncryptionKey, 1, "alpha");
    EXPECT_EQ(lastAlert().message, Strings::localized("ENCRYPTION_KEY_CONFIRM_MESSAGE"));
    answer(MainAlerts::kEncryptionKey, 1, "beta ");

    EXPECT_EQ(lastAlert().message, Strings::localized("MISMATCH_ENCRYPTION_KEY_MESSAGE"));
    EXPECT_EQ(screen_->jobsStarted, 0);
    EXPECT_FALSE(CydiaFileManager::shared().encryptionKey());

    controller_->doOperation();
    scope_.serveMainQueue();
    answer(MainAlerts::kConfirmBackup, 1);
    EXPECT_EQ(lastAlert().message, Strings::localized("ENCRYPTION_KEY_MESSAGE"));
}

TEST_F(MainFlowTest, CancelAtTheKeyPromptBacksUpWithoutAKey) {
    gEncryptBackupEnabled = true;
    start();

    controller_->doOperation();
    scope_.serveMainQueue();
    answer(MainAlerts::kConfirmBackup, 1);
    answer(MainAlerts::kBackupTitle, 1, "  Before the upgrade \n");
    answer(MainAlerts::kBackupDescription, 1, "");
    answer(MainAlerts::kEncryptionKey, 0);
    waitForJobEnd();

    EXPECT_EQ(screen_->jobsStarted, 1);
    EXPECT_EQ(lastAlert().tag, MainAlerts::kBackupDone);
    const auto session = CydiaFileManager::shared().backupSessions().back();
    EXPECT_FALSE(session->isEncrypted());
    EXPECT_EQ(session->title(), "Before the upgrade");
    EXPECT_FALSE(session->quickDescription().value_or("").empty()) << "the date stands for a missing description";
    EXPECT_EQ(controller_->state(), MainViewController::State::IdleBackup);
}

TEST_F(MainFlowTest, AFileHandedInWhileLoadedIsOfferedAloneBeforeAnyErrorOrAutomaticBackup) {
    start();
    const std::size_t shownBefore = alerts().alerts.size();
    CydiaFileManager::shared().setErrorMsg("The history is damaged");
    gAutobackupEnabled = true;
    gWasForegrounded = true;

    StowhavenAppDelegate().openURL("file://" + device_.path("/var/mobile/Documents/shared.stowhvn"), "Mail");
    scope_.serveMainQueue();

    EXPECT_FALSE(controller_->isAutomaticBackupPending()) << "no backup is on its way";
    ASSERT_EQ(alerts().alerts.size(), shownBefore + 1);
    EXPECT_EQ(lastAlert().tag, MainAlerts::kUseImportedData);
    EXPECT_EQ(screen_->jobsStarted, 0);
    answer(MainAlerts::kUseImportedData, 0);
    EXPECT_FALSE(DataToImport::url());
}

// A confirmed restore asks the firmware question; "no" keeps only the compatible packages
// and asks for the key, which must open the session; "yes" goes straight to the restore.
TEST_F(MainFlowTest, ARestoreAsksConfirmationFirmwareAndKeyInThatOrder) {
    gEncryptBackupEnabled = true;
    gBackupTitleEnabled = false;
    gBackupDescriptionEnabled = false;
    start();
    backUpWithKey("k1");
    controller_->configureUIRestoreMode();
    EXPECT_EQ(controller_->state(), MainViewController::State::IdleRestore);

    controller_->doOperation();
    scope_.serveMainQueue();
    answer(MainAlerts::kConfirmRestore, 1);
    answer(MainAlerts::kFirmwareCompatibility, 2);
    answer(MainAlerts::kEncryptionKey, 1, "k2");
    EXPECT_EQ(lastAlert().message, Strings::localized("INVALID_ENCRYPTION_KEY_MESSAGE"));
    EXPECT_EQ(screen_->jobsStarted, 1) << "only the backup ran";

    controller_->doOperation();
    scope_.serveMainQueue();
    answer(MainAlerts::kConfirmRestore, 1);
    answer(MainAlerts::kFirmwareCompatibility, 1);
    EXPECT_EQ(screen_->jobsStarted, 2) << "no key asked on this road";
    waitForJobEnd();
    EXPECT_EQ(lastAlert().tag, MainAlerts::kRestoreDone);
    EXPECT_TRUE(scope_.supervisor().lowLevelGetDatePreferencesDataForKey("LAST_RESTORE_DATE"));

    controller_->doOperation();
    scope_.serveMainQueue();
    answer(MainAlerts::kConfirmRestore, 1);
    answer(MainAlerts::kFirmwareCompatibility, 2);
    answer(MainAlerts::kEncryptionKey, 1, "k1");
    EXPECT_EQ(screen_->jobsStarted, 3);
    waitForJobEnd();
}

}  // namespace
}  // namespace stowhaven
