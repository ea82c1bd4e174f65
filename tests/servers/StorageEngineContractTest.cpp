// What every storage engine must do, run against each engine on its real storage: local
// storage on the device's folder, FTP and WebDAV on real servers here, the cloud engines on
// their emulators from their own test files (StorageEngineContract.h).

#include "servers/FtpEngineUnderTest.h"
#include "servers/StorageEngineContract.h"

#include "core/BackupSession.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "storage/owncloud/OwnCloudHelper.h"
#include "support/FtpServer.h"
#include "support/StorageRequest.h"
#include "support/SupervisorScope.h"
#include "support/WebDavServer.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>

namespace stowhaven {
namespace {

class LocalEngine final : public EngineUnderTest {
public:
    explicit LocalEngine(test::SupervisorScope& scope) { scope.services.shell.runsCommands = true; }
    std::shared_ptr<StorageHelperProtocol> start() override {
        LocalStorageHelper::settleStoragePath();
        return LocalStorageHelper::createLocalStorageHelper();
    }
};

class OwnCloudEngine final : public EngineUnderTest {
public:
    explicit OwnCloudEngine(test::SupervisorScope& scope, const test::WebDavServerOptions& options = {})
        : server_(options) {
        const WebDavAccount account = server_.account();
        ServerCredentials{account.baseUrl, "", account.login, account.password,
                          std::string(test::WebDavServer::kSharePath) + "/Stowhaven"}
            .storeAsCurrent(kOwnCloudSettings);
        scope.supervisor().setStorageToOwnCloud();
    }
    std::shared_ptr<StorageHelperProtocol> start() override { return OwnCloudHelper::createOwnCloudHelper(); }

private:
    test::WebDavServer server_;
};

TEST_P(StorageEngineContractTest, AStoredSessionComesBackWholeAtTheNextStart) {
    const Date date(800000000);
    storeSession(date, "the history");
    restart();
    const std::string history = StorageLayout::historyFileName(date);
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{history});
    EXPECT_EQ(FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + history), "the history");
    const auto index = test::request(*engine_, [&] { engine_->loadFile("NOTES.idx", date, std::nullopt); });
    EXPECT_EQ(fetched(index), "NOTES-001\n");
    const auto part = test::request(*engine_, [&] { engine_->loadFile("NOTES-001", date, std::string("NOTES")); });
    EXPECT_EQ(fetched(part), "the notes of the history");
}

// Every session holds files of the same names: a request answers with its own session's,
// whichever session was read before it.
TEST_P(StorageEngineContractTest, EachSessionsFileComesFromThatSessionWhicheverWasReadBefore) {
    const std::pair<Date, std::string> sessions[] = {{Date(800000000), "first"}, {Date(810000000), "second"}};
    for (const auto& [date, history] : sessions) storeSession(date, history);
    restart();
    for (const auto& [date, history] : {sessions[0], sessions[1], sessions[0]}) {
        const auto part = test::request(*engine_, [&] { engine_->loadFile("NOTES-001", date, std::string("NOTES")); });
        EXPECT_EQ(fetched(part), "the notes of " + history);
        if (const auto* path = std::get_if<std::string>(&part.object)) FileManager::removeItem(*path);
    }
}

TEST_P(StorageEngineContractTest, SessionsListOldestFirstSoThatTheLastIsTheNewest) {
    const Date older(700000000);
    const Date newer(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("newer", newer); }));
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("older", older); }));
    restart();
    EXPECT_EQ(engine_->existingFiles(),
              (std::vector<std::string>{StorageLayout::historyFileName(older), StorageLayout::historyFileName(newer)}));
    EXPECT_EQ(FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(newer)),
              "newer");
}

TEST_P(StorageEngineContractTest, ASessionOfTheSameStampNeverReplacesTheOneStored) {
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("first", date); }));
    const auto second = test::request(*engine_, [&] { engine_->uploadBackupHistory("second", date); });
    EXPECT_TRUE(second.failed);
    EXPECT_TRUE(engine_->hasError());
    restart();
    EXPECT_EQ(FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(date)),
              "first");
}

TEST_P(StorageEngineContractTest, ADeletedSessionIsGoneWithItsFolderAndOneWithoutAFolderIsNoFailure) {
    const Date withData(800000000);
    const Date listOnly(810000000);
    storeSession(withData, "with data");
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("list only", listOnly); }));
    for (const Date date : {withData, listOnly}) {
        auto session = std::make_shared<BackupSession>();
        session->setSessionDate(date);
        EXPECT_TRUE(succeeds([&] { engine_->deleteBackupSession(session); }));
    }
    EXPECT_TRUE(engine_->existingFiles().empty());
    restart();
    EXPECT_TRUE(engine_->existingFiles().empty());
    const auto part = test::request(*engine_, [&] { engine_->loadFile("NOTES-001", withData, std::string("NOTES")); });
    EXPECT_TRUE(part.failed) << "the session's folder went too";
}

TEST_P(StorageEngineContractTest, AFileThatIsntThereFailsTheRequestWithAnError) {
    const auto missing =
        test::request(*engine_, [&] { engine_->loadFile("NOTES-009", Date(1), std::string("NOTES")); });
    EXPECT_TRUE(missing.failed);
    EXPECT_TRUE(engine_->hasError());
    EXPECT_FALSE(FileManager::fileExists(TemporaryDirectory::path() + "/NOTES-009")) << "nothing half fetched";
}

// Device folders on a WebDAV share are the user's to rename and delete: the engine refuses,
// through the failure hook, so that no caller waits, and the folders stay as they are.
TEST(OwnCloudDeviceFoldersTest, AreLeftToTheUserWithoutLeavingTheCallerWaiting) {
    STOWHAVEN_SKIP_WITHOUT_WEBDAV_SERVER();
    test::SupervisorScope scope;
    OwnCloudEngine storage(scope);
    const auto engine = storage.start();
    ASSERT_FALSE(engine->hasError()) << *engine->errorMessage();
    const std::string device = scope.supervisor().deviceName();
    EXPECT_TRUE(test::request(*engine, [&] { engine->moveFromPath(device, "Renamed"); }).failed);
    EXPECT_TRUE(test::request(*engine, [&] { engine->deleteBackupForDeviceId(device); }).failed);
    EXPECT_EQ(engine->availableDeviceBackups(), std::vector<std::string>{device});
}

INSTANTIATE_TEST_SUITE_P(
    Engines, StorageEngineContractTest,
    ::testing::Values(
        EngineKind{"Local", [](test::SupervisorScope& scope) { return std::make_unique<LocalEngine>(scope); }},
        EngineKind{"Ftp", [](test::SupervisorScope& scope) { return std::make_unique<FtpEngineUnderTest>(scope); },
                   test::FtpServer::isAvailable},
        EngineKind{"OwnCloud", [](test::SupervisorScope& scope) { return std::make_unique<OwnCloudEngine>(scope); },
                   test::WebDavServer::isAvailable},
        EngineKind{"OwnCloudOverHttps",
                   [](test::SupervisorScope& scope) {
                       return std::make_unique<OwnCloudEngine>(scope, test::WebDavServerOptions{.https = true});
                   },
                   test::WebDavServer::isAvailable}),
    engineKindName);

}  // namespace
}  // namespace stowhaven
