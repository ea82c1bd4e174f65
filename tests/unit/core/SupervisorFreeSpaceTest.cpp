#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "support/FakeDataSets.h"
#include "support/FakeStorageEngine.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <fstream>

namespace stowhaven {
namespace {

// Both folders measured, so that the total stands as given.
std::shared_ptr<Application> applicationOf(const std::string& displayName, double megabytes) {
    auto application = std::make_shared<Application>("App");
    application->setDisplayName(displayName);
    application->setTotalBytes(megabytes * 1048576);
    application->setDocumentsDirSize(0);
    application->setLibraryDirSize(0);
    return application;
}

class SupervisorFreeSpaceTest : public ::testing::Test {
protected:
    SupervisorFreeSpaceTest() {
        supervisor_.setDeviceDataSets([this] { return device_; });
        supervisor_.setSessionDataSets([this] { return session_; });
    }

    void setLargestApplication(const std::string& displayName, double megabytes) {
        supervisor_.setLargestApplication(applicationOf(displayName, megabytes));
    }

    // The alerts shown so far, as "title: message".
    std::vector<std::string> alerts() {
        scope_.serveMainQueue();
        std::vector<std::string> shown;
        for (const auto& alert : scope_.screens.alerts->alerts) shown.push_back(alert.title + ": " + alert.message);
        return shown;
    }

    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
    std::shared_ptr<test::FakeDataSets> device_ = std::make_shared<test::FakeDataSets>();
    std::shared_ptr<test::FakeDataSets> session_ = std::make_shared<test::FakeDataSets>();
};

TEST_F(SupervisorFreeSpaceTest, TheLargestDataSetIsTheFirstOfTheBiggestThatIsThere) {
    setLargestApplication("Big App", 100);
    device_->with(StockDataSet::Chat, 300)
        .with(StockDataSet::Photos, 300)
        .with(StockDataSet::Videos, 200)
        .with(StockDataSet::Safari, 900, false);
    EXPECT_EQ(supervisor_.findLargestDataSet().name, "Messages data");
    EXPECT_EQ(supervisor_.findLargestDataSet().size, 300);

    device_ = std::make_shared<test::FakeDataSets>();
    device_->with(StockDataSet::Calendar, 100).with(StockDataSet::Notes, 99);
    EXPECT_EQ(supervisor_.findLargestDataSet().name, "Big App");

    supervisor_.setLargestApplication(nullptr);
    EXPECT_EQ(supervisor_.findLargestDataSet().size, -32768) << "nothing to weigh";
}

TEST_F(SupervisorFreeSpaceTest, ARestoreWeighsTheSessionsDataSetsAndNotTheApplication) {
    setLargestApplication("Big App", 100);
    device_->with(StockDataSet::Photos, 5000);
    session_->with(StockDataSet::Maps, 10);
    gIsBackupMode = false;

    EXPECT_EQ(supervisor_.findLargestDataSet().name, "Maps data");
    EXPECT_EQ(supervisor_.findLargestDataSet().size, 10);

    session_ = nullptr;
    EXPECT_EQ(supervisor_.findLargestDataSet().size, -32768);
}

TEST_F(SupervisorFreeSpaceTest, TheDevicesOwnRoomIsTestedInBothDirectionsEvenWithTheCheckOff) {
    setLargestApplication("Big App", 100);
    supervisor_.setFreeSpace(100);
    gFreeSpaceCheckEnabled = false;
    EXPECT_FALSE(supervisor_.hasValidFreeSpace());

    gIsBackupMode = false;
    session_->with(StockDataSet::Photos, 2048.5);
    supervisor_.setFreeSpace(1000.25);
    EXPECT_FALSE(supervisor_.hasValidFreeSpace());

    EXPECT_EQ(alerts(), (std::vector<std::string>{
                            "Warning: There is not enough free space to archive Big App (100 MB): only 100 MB is free "
                            "on this device. Please make sure at least 100 MB is free and try again.",
                            "Warning: There is not enough free space to restore Photos (2,048.5 MB): only 1,000.25 MB "
                            "is free on this device. Please make sure at least 2,048.5 MB is free and try again.",
                        }));
}

TEST_F(SupervisorFreeSpaceTest, TheEnginesRoomIsTestedOnlyForABackupWithTheCheckOn) {
    const auto dropbox = test::FakeStorageEngine::install(StorageType::Dropbox);
    dropbox->space = 80;
    supervisor_.setStorageToDropbox();
    supervisor_.setFreeSpace(1000);
    setLargestApplication("Big App", 100);

    EXPECT_FALSE(supervisor_.hasValidFreeSpace());
    gFreeSpaceCheckEnabled = false;
    EXPECT_TRUE(supervisor_.hasValidFreeSpace());
    gFreeSpaceCheckEnabled = true;
    gIsBackupMode = false;
    session_->with(StockDataSet::Notes, 100);
    EXPECT_TRUE(supervisor_.hasValidFreeSpace());
    gIsBackupMode = true;
    dropbox->space = 100.5;
    EXPECT_TRUE(supervisor_.hasValidFreeSpace());

    EXPECT_EQ(alerts(), std::vector<std::string>{"Warning: There is not enough free space on Dropbox™ for Big App "
                                                 "(100 MB): only 80 MB is free."});
}

TEST_F(SupervisorFreeSpaceTest, AnEngineWithNoRoomAtAllIsToldByTheWholeBackupsSize) {
    supervisor_.setStorageToGDrive();
    supervisor_.setFreeSpace(1000);
    setLargestApplication("Big App", 100);
    device_->withBackupTotalSize(1234.5);

    EXPECT_FALSE(supervisor_.hasValidFreeSpace());
    EXPECT_EQ(alerts(), std::vector<std::string>{
                            "Warning: There is no free space left on GDrive™. This backup needs 1,234.5 MB."});
}

TEST_F(SupervisorFreeSpaceTest, AFileTheSizeOfTheUploadLimitDoesNotFit) {
    const auto box = test::FakeStorageEngine::install(StorageType::Box);
    box->uploadLimit = 1000;
    supervisor_.setStorageToBox();

    EXPECT_TRUE(supervisor_.isFileWithinUploadLimit(999.99, true, "Movie"));
    EXPECT_FALSE(supervisor_.isFileWithinUploadLimit(1000, false, "Movie"));
    EXPECT_FALSE(supervisor_.isFileWithinUploadLimit(1000, true, "Movie"));
    EXPECT_FALSE(supervisor_.isFileWithinUploadLimit(1500.5, true, std::nullopt));

    EXPECT_EQ(alerts(), (std::vector<std::string>{
                            "Upload limit: Movie (1,000 MB) is larger than this storage accepts for one file, so it "
                            "will be left out.",
                            "Upload limit: [N/A] (1,500.5 MB) is larger than this storage accepts for one file, so it "
                            "will be left out.",
                        }));
}

TEST_F(SupervisorFreeSpaceTest, LocalStorageTakesWhatFitsInTheWholeMegabytesFreeOnTheDevice) {
    const auto local = test::FakeStorageEngine::install(StorageType::Local);
    local->uploadLimit = -1;
    supervisor_.setFreeSpace(50.9);

    EXPECT_TRUE(supervisor_.isFileWithinUploadLimit(49.99, false, "a"));
    EXPECT_FALSE(supervisor_.isFileWithinUploadLimit(50, false, "a"));

    supervisor_.setCurrentStorageType(static_cast<StorageType>(42));
    EXPECT_FALSE(supervisor_.isFileWithinUploadLimit(0, false, "a"));
    supervisor_.setStorageToAddressbook();
    EXPECT_TRUE(supervisor_.isFileWithinUploadLimit(1e9, true, "a"));
    setLargestApplication("Big App", 100000);
    EXPECT_TRUE(supervisor_.hasValidFreeSpace()) << "the address book always has room";
    EXPECT_TRUE(alerts().empty());
}

TEST(SupervisorUnmeasuredSpaceTest, ADeviceWhoseRoomCantBeMeasuredHasNoneForAnything) {
    test::SupervisorScope scope;
    std::ofstream(scope.path("/var")) << "not a folder";
    Supervisor& supervisor = scope.supervisor();
    supervisor.setLargestApplication(applicationOf("App", 1));

    EXPECT_EQ(supervisor.freeSpace(), 0);
    EXPECT_FALSE(supervisor.hasValidFreeSpace());
    EXPECT_FALSE(supervisor.isFileWithinUploadLimit(0.5, false, "a"));
}

}  // namespace
}  // namespace stowhaven
