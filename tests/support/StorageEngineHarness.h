#pragma once

// The tests that every storage engine passes, driving it through the contract as the
// pipeline does and checking the results on the storage itself. An engine's tests
// instantiate them with a fixture of their own (see LocalStorageTest):
//
//     struct MyEngineFixture {
//         // Made on a Supervisor of the test's own, with the main queue on the test's thread.
//         std::shared_ptr<StorageHelperProtocol> engine;
//         // Reads the storage from outside the engine.
//         StorageProbe& probe();
//         // Whether deleting a session that has no directory leaves an error.
//         static constexpr bool kDeleteWithoutDirectoryLeavesError = ...;
//     };
//     INSTANTIATE_TYPED_TEST_SUITE_P(MyEngine, StorageEngineContractTest, MyEngineFixture);

#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/MainQueue.h"
#include "storage/AbstractStorageHelper.h"
#include "storage/StorageLayout.h"
#include "support/SampleSessions.h"
#include "support/StorageRequest.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>

namespace stowhaven::test {

// The storage seen from outside the engine: paths relative to the device directory (the
// storage folder of local storage).
class StorageProbe {
public:
    virtual ~StorageProbe() = default;
    virtual std::optional<std::string> read(const std::string& path) = 0;
    virtual bool exists(const std::string& path) = 0;
};

// Takes in the history files it is handed, knowing the dates it is told.
class RecordingHistoryReceiver final : public SessionHistoryReceiver {
public:
    bool hasBackupSessionDatedOn(Date date) override { return known.contains(date.timeIntervalSinceReferenceDate()); }
    void takeHistoryFile(const std::string& path) override {
        taken.push_back(std::filesystem::path(path).filename().string());
        FileManager::removeItem(path);
    }
    std::set<double> known;
    std::vector<std::string> taken;
};

template <typename Fixture>
class StorageEngineContractTest : public ::testing::Test {
protected:
    StorageHelperProtocol& engine() { return *fixture_.engine; }
    StorageProbe& probe() { return fixture_.probe(); }

    // A file of the temporary folder, as the pipeline makes them.
    static std::string temporaryFile(const std::string& name, const std::string& contents) {
        const std::string path = TemporaryDirectory::path() + "/" + name;
        FileManager::writeFile(path, contents);
        return path;
    }
    static std::optional<std::string> temporaryContents(const std::string& name) {
        return FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + name);
    }

    RequestOutcome uploadHistory(const std::string& text, Date date) {
        return request(engine(), [&] { engine().uploadBackupHistory(text, date); });
    }

    Fixture fixture_;
};

TYPED_TEST_SUITE_P(StorageEngineContractTest);

constexpr Date kOlder(700000000);
constexpr Date kNewer(700086400);
constexpr Date kNewest(700172800);

TYPED_TEST_P(StorageEngineContractTest, AHistoryUploadIsStoredUnderItsStampAndListed) {
    const auto outcome = this->uploadHistory("history text", kOlder);
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_FALSE(this->engine().hasError());
    const std::string name = StorageLayout::historyFileName(kOlder);
    EXPECT_EQ(this->probe().read(name), "history text");
    EXPECT_EQ(this->engine().existingFiles(), std::vector<std::string>{name});
}

TYPED_TEST_P(StorageEngineContractTest, TheMostRecentSessionIsTheNewestStamp) {
    for (const Date date : {kNewer, kNewest, kOlder}) this->uploadHistory(StorageLayout::stamp(date), date);
    this->engine().flushCache();
    this->engine().loadMostRecentBackupSession();
    const std::vector<std::string> listed = this->engine().existingFiles();
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed.back(), StorageLayout::historyFileName(kNewest));
    EXPECT_EQ(this->temporaryContents(StorageLayout::historyFileName(kNewest)), StorageLayout::stamp(kNewest));
}

TYPED_TEST_P(StorageEngineContractTest, SessionAndDataDirectoriesHoldTheUploadedFiles) {
    EXPECT_TRUE(request(this->engine(), [&] { this->engine().createDirectoryDated(kNewer); }).succeeded);
    EXPECT_TRUE(request(this->engine(), [&] { this->engine().createDirectory("PREFERENCES", kNewer); }).succeeded);
    const std::string stamp = StorageLayout::stamp(kNewer);
    EXPECT_TRUE(this->probe().exists(stamp + "/PREFERENCES"));

    const std::string part = this->temporaryFile("PREFERENCES_001", "part one");
    const std::string index = this->temporaryFile("PREFERENCES.idx", "PREFERENCES_001\n");
    EXPECT_TRUE(request(this->engine(), [&] { this->engine().uploadFile(part, kNewer, "PREFERENCES"); }).succeeded);
    EXPECT_TRUE(request(this->engine(), [&] { this->engine().uploadFile(index, kNewer, std::nullopt); }).succeeded);
    EXPECT_EQ(this->probe().read(stamp + "/PREFERENCES/PREFERENCES_001"), "part one");
    EXPECT_EQ(this->probe().read(stamp + "/PREFERENCES.idx"), "PREFERENCES_001\n");
}

TYPED_TEST_P(StorageEngineContractTest, AStoredFileComesBackIntoTheTemporaryFolder) {
    request(this->engine(), [&] { this->engine().createDirectory("DEBS", kNewer); });
    const std::string part = this->temporaryFile("DEBS_001", "deb bytes");
    request(this->engine(), [&] { this->engine().uploadFile(part, kNewer, "DEBS"); });
    FileManager::removeItem(part);

    const auto outcome = request(this->engine(), [&] { this->engine().loadFile("DEBS_001", kNewer, "DEBS"); });
    ASSERT_TRUE(outcome.succeeded);
    const auto* local = std::get_if<std::string>(&outcome.object);
    ASSERT_NE(local, nullptr) << "the hook is handed the local path";
    EXPECT_EQ(FileManager::contentsOfFile(*local), "deb bytes");

    const auto missing = request(this->engine(), [&] { this->engine().loadFile("DEBS_002", kNewer, "DEBS"); });
    EXPECT_TRUE(missing.failed);
    EXPECT_TRUE(this->engine().hasError());
}

TYPED_TEST_P(StorageEngineContractTest, DeletingASessionTakesItsHistoryAndItsDirectory) {
    this->uploadHistory("with data", kOlder);
    request(this->engine(), [&] { this->engine().createDirectory("NOTES", kOlder); });
    this->uploadHistory("packages only", kNewer);
    auto session = test::fullSession();

    session->setSessionDate(kOlder);
    EXPECT_TRUE(request(this->engine(), [&] { this->engine().deleteBackupSession(session); }).succeeded);
    EXPECT_FALSE(this->probe().exists(StorageLayout::historyFileName(kOlder)));
    EXPECT_FALSE(this->probe().exists(StorageLayout::stamp(kOlder)));
    EXPECT_FALSE(this->engine().hasError());

    session->setSessionDate(kNewer);
    EXPECT_TRUE(request(this->engine(), [&] { this->engine().deleteBackupSession(session); }).succeeded)
        << "a session without a directory is no failure";
    EXPECT_FALSE(this->probe().exists(StorageLayout::historyFileName(kNewer)));
    EXPECT_EQ(this->engine().hasError(), TypeParam::kDeleteWithoutDirectoryLeavesError);
    EXPECT_TRUE(this->engine().existingFiles().empty());
}

TYPED_TEST_P(StorageEngineContractTest, TheRestOfTheHistoryGoesToTheReceiver) {
    const auto receiver = std::make_shared<RecordingHistoryReceiver>();
    AbstractStorageHelper::setSessionHistoryReceiver(receiver);
    for (const Date date : {kOlder, kNewer, kNewest}) this->uploadHistory("text", date);
    this->engine().flushCache();
    this->engine().loadMostRecentBackupSession();
    FileManager::removeItem(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(kNewest));

    this->engine().retrieveRestOfBackupHistory();
    AbstractStorageHelper::setSessionHistoryReceiver(nullptr);
    for (const Date date : {kOlder, kNewer}) {
        const std::string name = StorageLayout::historyFileName(date);
        EXPECT_NE(std::find(receiver->taken.begin(), receiver->taken.end(), name), receiver->taken.end()) << name;
    }
}

REGISTER_TYPED_TEST_SUITE_P(StorageEngineContractTest, AHistoryUploadIsStoredUnderItsStampAndListed,
                            TheMostRecentSessionIsTheNewestStamp, SessionAndDataDirectoriesHoldTheUploadedFiles,
                            AStoredFileComesBackIntoTheTemporaryFolder, DeletingASessionTakesItsHistoryAndItsDirectory,
                            TheRestOfTheHistoryGoesToTheReceiver);

}  // namespace stowhaven::test
