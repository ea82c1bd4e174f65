// The history views driven through a kept screen: this device's sessions on a file engine
// and on the address book, and the device backups of an engine, each engine a test's own.

#include "cli/HistoryScreenState.h"
#include "core/CydiaFileManager.h"
#include "flows/AvailableDeviceBackupController.h"
#include "flows/BackupSessionsViewController.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageEngines.h"
#include "storage/StorageLayout.h"
#include "support/NullStorageEngine.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;

// A file engine whose storage is a map of device folders to history file names; each request
// answers by its hooks, from the thread it runs on, as a network engine does.
class TestEngine final : public test::NullStorageEngine {
public:
    void loadAvailableDeviceBackups() override {
        std::vector<std::string> names;
        for (const auto& [name, files] : devices) names.push_back(name);
        setAvailableDeviceBackups(names);
        performSuccessSelector();
    }
    void loadBackupDetailsForDevice(const std::string& name) override { performSuccessSelector(devices[name]); }
    void moveFromPath(const std::string& from, const std::string& to) override {
        devices[to] = devices[from];
        devices.erase(from);
        performSuccessSelector();
    }
    void deleteBackupSession(const std::shared_ptr<BackupSession>& session) override {
        deleted.push_back(StorageLayout::stamp(*session->sessionDate()));
        performSuccessSelector();
    }
    void uploadBackupHistory(const std::string&, Date date) override {
        uploaded.push_back(StorageLayout::stamp(date));
        refuses ? performFailureSelector() : performSuccessSelector();
    }
    using NullStorageEngine::setExistingFiles;

    std::map<std::string, std::vector<std::string>> devices;
    std::vector<std::string> deleted;
    std::vector<std::string> uploaded;
    bool refuses = false;
};

class HistoryFlowTest : public ::testing::Test {
protected:
    HistoryFlowTest() {
        scope_.supervisor();
        StorageEngines::registerFactory(StorageType::FTP, [this] { return engine_; });
        StorageEngines::create(StorageType::FTP);
        scope_.supervisor().setStorageTo(StorageType::FTP);
        for (const char* name : {"LOAD_DATA", "RELOAD_DATA_NEEDED"}) {
            observers_.push_back(NotificationCenter::defaultCenter().addObserver(
                name, nullptr, [this](const Notification& note) { posted_.push_back(note.name); }));
        }
    }
    ~HistoryFlowTest() override {
        for (const auto& observer : observers_) NotificationCenter::defaultCenter().removeObserver(observer);
    }

    // Sessions of this device a day apart, the last the newest and the current one.
    std::vector<std::shared_ptr<BackupSession>> keepSessions(std::size_t count) {
        std::vector<std::shared_ptr<BackupSession>> sessions;
        std::vector<std::string> files;
        for (std::size_t index = 0; index < count; ++index) {
            auto session = std::make_shared<BackupSession>();
            session->setSessionDate(Date(747763200.0 + 86400.0 * static_cast<double>(index)));
            session->setTitle("Session " + std::to_string(index));
            session->setRawData(
                "A\tcom.a\t1\tme\tTweaks\t(null)\nB\tcom.b\t1\tme\tTweaks\t(null)\n"
                "C\tcom.c\t1\tme\tThemes\t(null)\n");
            sessions.push_back(session);
            files.push_back(StorageLayout::historyFileName(*session->sessionDate()));
        }
        engine_->setExistingFiles(files);
        CydiaFileManager::shared().processBackupData(sessions, false);
        return sessions;
    }

    template <typename Controller>
    void waitFor(const Controller& controller) {
        ASSERT_TRUE(MainQueue::shared().runUntil([&] { return !controller.isWaiting(); }, 30s));
        scope_.serveMainQueue();
    }

    test::RecordingAlertPresenter& alerts() { return *scope_.screens.alerts; }
    std::vector<int> tags() {
        std::vector<int> tags;
        for (const auto& alert : alerts().alerts) tags.push_back(alert.tag);
        return tags;
    }

    test::SupervisorScope scope_;
    std::shared_ptr<TestEngine> engine_ = std::make_shared<TestEngine>();
    std::shared_ptr<HistoryScreenState> screen_ = std::make_shared<HistoryScreenState>();
    std::vector<std::string> posted_;
    std::vector<NotificationCenter::ObserverToken> observers_;
};

TEST_F(HistoryFlowTest, ClosingMakesTheChosenSessionCurrentAndPostsOnlyWhenItChanged) {
    const auto sessions = keepSessions(2);
    auto view = BackupSessionsViewController::create(screen_);
    view->viewDidAppear();
    waitFor(*view);
    ASSERT_EQ(screen_->rows.size(), 2U);
    EXPECT_EQ(screen_->chosen, 0U) << "the newest, current one first";
    EXPECT_EQ(screen_->details[1], "3 packages");
    view->viewWillDisappear();
    EXPECT_TRUE(posted_.empty());

    view = BackupSessionsViewController::create(screen_);
    view->viewDidAppear();
    view->selectRow(1);
    view->viewWillDisappear();
    EXPECT_EQ(CydiaFileManager::shared().currentBackupSession(), sessions[0]);
    EXPECT_EQ(posted_, (std::vector<std::string>{"LOAD_DATA", "RELOAD_DATA_NEEDED"}));
}

TEST_F(HistoryFlowTest, DeletingGoesThroughTheEngineAndTheLastDeletedClosesTheView) {
    const auto sessions = keepSessions(2);
    const auto view = BackupSessionsViewController::create(screen_);
    view->viewDidAppear();
    view->selectRow(1);
    view->askToDeleteSelected();
    ASSERT_EQ(tags(), std::vector<int>{BackupSessionsViewController::kDeleteSession});
    alerts().dismissLast(0);
    waitFor(*view);
    EXPECT_TRUE(engine_->deleted.empty()) << "no is no";

    alerts().dismissLast(1);
    waitFor(*view);
    EXPECT_EQ(engine_->deleted, std::vector<std::string>{StorageLayout::stamp(*sessions[0]->sessionDate())});
    EXPECT_EQ(CydiaFileManager::shared().backupSessions(), std::vector{sessions[1]});
    EXPECT_EQ(view->selectedBackupSession(), sessions[1]) << "the row above the deleted one";
    EXPECT_FALSE(screen_->closed);

    view->deleteBackupSession();
    waitFor(*view);
    EXPECT_TRUE(CydiaFileManager::shared().backupSessions().empty());
    EXPECT_TRUE(screen_->closed);
    EXPECT_EQ(posted_, std::vector<std::string>{"RELOAD_DATA_NEEDED"});
}

// The address book: the engine that stands in for Dropbox takes the copy, and local storage
// is current after it, whether it went up or not; a session copied is not offered again.
TEST_F(HistoryFlowTest, AnUploadToDropboxFromTheAddressBookLeavesLocalStorageCurrentAfterEitherEnd) {
    const auto dropbox = std::make_shared<TestEngine>();
    StorageEngines::registerFactory(StorageType::Dropbox, [dropbox] { return dropbox; });
    const auto sessions = keepSessions(2);
    for (const bool refuses : {true, false}) {
        SCOPED_TRACE(refuses ? "refused" : "taken");
        scope_.supervisor().setStorageToAddressbook();
        dropbox->refuses = refuses;
        const auto view = BackupSessionsViewController::create(screen_);
        view->viewDidAppear();
        ASSERT_TRUE(view->canUploadToDropbox());
        view->askToUploadToDropbox();
        ASSERT_EQ(alerts().alerts.back().tag, BackupSessionsViewController::kUploadToDropbox);
        alerts().dismissLast(1);
        waitFor(*view);
        EXPECT_EQ(dropbox->uploaded.back(), StorageLayout::stamp(*sessions[1]->sessionDate()));
        EXPECT_TRUE(scope_.supervisor().isStorageLocal());
        EXPECT_EQ(alerts().alerts.back().tag == BackupSessionsViewController::kUploadedToDropbox, !refuses);
        EXPECT_FALSE(scope_.screens.progress->active);
    }
    scope_.supervisor().setStorageToAddressbook();
    const auto view = BackupSessionsViewController::create(screen_);
    view->viewDidAppear();
    EXPECT_FALSE(view->canUploadToDropbox());
}

TEST_F(HistoryFlowTest, TheOnlyDeviceBackupThatIsntThisDevicesIsChosenWithItsDatesNewestFirst) {
    engine_->devices["Old iPad"] = {"2024-05-01_10~00~00.stowhvn", "2024-05-01_10~00~00", "notes.txt",
                                    "2024-06-02_08~30~00.stowhvn"};
    const auto view = AvailableDeviceBackupController::create(screen_);
    view->viewDidAppear();
    waitFor(*view);
    EXPECT_EQ(screen_->rows, std::vector<std::string>{"Old iPad"});
    EXPECT_EQ(view->selectedDeviceBackup(), "Old iPad");
    EXPECT_EQ(screen_->details, (std::vector<std::string>{"2024-06-02 @ 08:30:00", "2024-05-01 @ 10:00:00"}));
    EXPECT_TRUE(tags().empty());
}

TEST_F(HistoryFlowTest, ARenameToTheSameNameInOtherCapitalsOrToAnotherDevicesIsRefused) {
    engine_->devices = {{"Old iPad", {}}, {"Ann's iPhone", {}}};
    const auto view = AvailableDeviceBackupController::create(screen_);
    view->viewDidAppear();
    waitFor(*view);
    ASSERT_TRUE(view->selectDeviceBackup("Old iPad"));
    waitFor(*view);
    for (const char* name : {"OLD IPAD", "ann's iphone"}) {
        view->rename(name);
        waitFor(*view);
    }
    EXPECT_EQ(tags(), std::vector<int>(2, AvailableDeviceBackupController::kDuplicateName));
    EXPECT_TRUE(engine_->devices.contains("Old iPad"));

    view->rename("Ann's old iPad");
    waitFor(*view);
    EXPECT_EQ(screen_->rows, (std::vector<std::string>{"Ann's iPhone", "Ann's old iPad"}));
    EXPECT_FALSE(view->selectDeviceBackup("Old iPad"));
}

}  // namespace
}  // namespace stowhaven
