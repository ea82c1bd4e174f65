// The Google Drive engine on the Drive emulator: the storage contract, then what is Drive's
// own: access tokens that expire beside a lasting refresh token, retried requests, an upload
// cut short, hostile and broken replies, listings read page after page, the device folder
// found or migrated, a restore's one walk of the session, and the terminal login.

#include "servers/CloudEngineTest.h"

#include "core/BackupSession.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageLayout.h"
#include "storage/gdrive/GDriveHelper.h"
#include "storage/gdrive/GDriveLogin.h"
#include "storage/gdrive/GDriveTokens.h"
#include "support/CapturedLog.h"
#include "support/FolderSnapshot.h"
#include "support/GDriveEmulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// Google Drive as a login leaves it: a refresh token the emulator issued, Drive the current
// engine.
class GDriveEngine final : public EngineUnderTest {
public:
    using Helper = GDriveHelper;

    explicit GDriveEngine(test::SupervisorScope& scope) {
        emulator.exportEnvironment();
        scope.supervisor().lowLevelStorePreferencesData(PlistValue(emulator.issueTokens().refreshToken),
                                                        GDriveTokens::kRefreshTokenKey);
        scope.supervisor().setStorageToGDrive();
    }
    std::shared_ptr<StorageHelperProtocol> start() override { return GDriveHelper::createGDriveHelper(); }

    test::GDriveEmulator emulator;
};

INSTANTIATE_TEST_SUITE_P(GDrive, StorageEngineContractTest, ::testing::Values(cloudEngineKind<GDriveEngine>("GDrive")),
                         engineKindName);

class GDriveEngineTest : public CloudEngineTest<GDriveEngine> {
protected:
    std::string storedRefreshToken() {
        return supervisor().lowLevelGetStringPreferencesDataForKey(GDriveTokens::kRefreshTokenKey).value_or("");
    }
    std::string deviceFolder() { return "/Stowhaven/" + supervisor().deviceName() + "/"; }
};

TEST_F(GDriveEngineTest, AnExpiredAccessTokenIsRefreshedWhileTheStoredRefreshTokenLasts) {
    const std::string refreshToken = storedRefreshToken();
    ASSERT_FALSE(start()->hasError()) << error();
    ASSERT_TRUE(emulator().waitForLine("POST /o/oauth2/token")) << "a run's first request fetches an access token";
    emulator().expireAccessToken();
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("after the expiry", date); })) << error();
    EXPECT_TRUE(emulator().waitForLine("POST /o/oauth2/token")) << "the 401 brought a refresh";
    EXPECT_EQ(storedRefreshToken(), refreshToken);

    ASSERT_FALSE(start()->hasError()) << error();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{StorageLayout::historyFileName(date)});

    // A refresh token the service no longer takes: its words, and local storage for this run.
    emulator().injectFault("invalid_grant", 10, "/o/oauth2/token");
    start();
    EXPECT_EQ(engine_->errorMessage(), "Token has been expired or revoked.");
    EXPECT_TRUE(supervisor().isStorageLocal());
}

TEST_F(GDriveEngineTest, BusyAndUnavailableRepliesAreRetried) {
    ASSERT_FALSE(start()->hasError()) << error();
    emulator().injectFault("status_503", 1, "/upload/drive/v3/files");
    emulator().injectFault("status_429", 1, "/drive/v3/files");
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); })) << error();
    EXPECT_TRUE(emulator().waitForLine("POST /upload/drive/v3/files"));
    EXPECT_TRUE(emulator().waitForLine("POST /upload/drive/v3/files")) << "the upload was asked for again";

    start()->loadMostRecentBackupSession();
    EXPECT_EQ(FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(date)),
              "the history");
}

TEST_F(GDriveEngineTest, AConnectionDroppedMidUploadFailsTheRequestAndLeavesTheEarlierSessionWhole) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date earlier(700000000);
    storeSession(earlier, "the earlier session");
    const std::vector<std::string> stored = emulator().paths();

    // The upload's session opens; each sending of its bytes breaks off half way.
    emulator().injectFault("drop_mid_body", 100, "/upload/drive/v3/files", 1);
    const auto cut = request([&] { engine_->uploadBackupHistory(std::string(600 * 1024, 'h'), Date(800000000)); });
    EXPECT_TRUE(cut.failed);
    EXPECT_TRUE(engine_->hasError());
    EXPECT_TRUE(emulator().waitForLine("PUT /upload/drive/v3/files"));
    emulator().injectFault("drop_mid_body", 0);
    EXPECT_EQ(emulator().paths(), stored) << "nothing of the cut session was stored";

    start()->loadMostRecentBackupSession();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{StorageLayout::historyFileName(earlier)});
    const auto part = request([&] { engine_->loadFile("PHOTOS-001", earlier, std::string("PHOTOS")); });
    ASSERT_TRUE(part.succeeded) << error();
    EXPECT_EQ(FileManager::contentsOfFile(std::get<std::string>(part.object)), "the PHOTOS");
}

TEST_F(GDriveEngineTest, HostileAndBrokenRepliesAreRefusedWithAMessageAndNothingLandsOutsideTheTemporaryFolder) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); }));
    const auto before = test::snapshot(scope_.path("/"));

    // Every list names a "STOWHAVEN" folder of id "../../x", and files "..", "a/b" and
    // "$(touch pwned)".
    test::CapturedLog log;
    emulator().injectFault("hostile_listing", 1000, "/drive/v3/files");
    ASSERT_FALSE(start()->hasError()) << error();
    engine_->loadMostRecentBackupSession();
    engine_->retrieveRestOfBackupHistory();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{StorageLayout::historyFileName(date)});
    EXPECT_EQ(engine_->availableDeviceBackups(), std::vector<std::string>{supervisor().deviceName()});
    EXPECT_TRUE(log.contains("Refused the listed item <STOWHAVEN> of id <../../x>"));
    EXPECT_TRUE(log.contains("Refused the listed item <a/b>"));
    expectNothingWrittenOutsideTheTemporaryFolder(before);
    emulator().injectFault("hostile_listing", 0);

    expectBrokenRepliesRefused("/drive/v3/files");
    EXPECT_EQ(engine_->freeSpace(), 9.223372036854776e+18) << "after a failure no backup is kept from trying";
}

// An older version named the device's folder after the device's identifier: it takes the
// device's name. (A new device's folder goes the same way: made under the identifier, then
// renamed.)
TEST_F(GDriveEngineTest, AnOlderVersionsDeviceFolderTakesTheDevicesNameAndTheQuotaCountsInKilobytes) {
    const std::string history = StorageLayout::historyFileName(Date(700000000));
    emulator().addFile("/Stowhaven/" + supervisor().deviceUID() + "/" + history, "from an older version");
    ASSERT_FALSE(start()->hasError()) << error();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{history});
    EXPECT_EQ(emulator().paths(), (std::vector<std::string>{"/Stowhaven/", deviceFolder(), deviceFolder() + history}));
    EXPECT_EQ(engine_->availableDeviceBackups(), std::vector<std::string>{supervisor().deviceName()});
    // Fifteen gigabytes less the history file, in units of 1024 bytes.
    EXPECT_DOUBLE_EQ(engine_->freeSpace(), (15.0 * 1024 * 1024 * 1024 - 21) / 1024);
}

TEST_F(GDriveEngineTest, ListingsAreReadPageAfterPage) {
    std::vector<std::string> histories;
    for (int second = 0; second < 130; ++second) {
        histories.push_back(StorageLayout::historyFileName(Date(700000000 + second)));
        emulator().addFile(deviceFolder() + histories.back(), "history");
    }
    std::sort(histories.begin(), histories.end());
    ASSERT_FALSE(start()->hasError()) << error();
    EXPECT_EQ(engine_->existingFiles(), histories);
}

// A restore lists the session once: after it, no folder needs to be listed again to fetch
// the session's files.
TEST_F(GDriveEngineTest, ARestoreFetchesTheSessionsFilesByTheRecordsOfOneWalk) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    storeSession(date, "the history");

    start()->preloadFileRefUsingDate(date);
    emulator().injectFault("malformed_json", 1000, "/drive/v3/files");
    for (const std::string kind : {"NOTES", "PHOTOS"}) {
        const auto part = request([&] { engine_->loadFile(kind + "-001", date, kind); });
        ASSERT_TRUE(part.succeeded) << error();
        EXPECT_EQ(FileManager::contentsOfFile(std::get<std::string>(part.object)), "the " + kind);
    }
    EXPECT_TRUE(request([&] { engine_->loadFile("../NOTES-001", date, std::string("..")); }).failed);
}

TEST_F(GDriveEngineTest, TheTerminalLoginTradesTheCodeOfItsOwnAddressAndARefusalEndsWithTheServicesWords) {
    supervisor().lowLevelStorePreferencesData(PlistValue(), GDriveTokens::kRefreshTokenKey);
    supervisor().setStorageToLocal();
    GDriveLogin login;
    std::string failure;
    const auto address = login.authorizationAddress(failure);
    ASSERT_TRUE(address) << failure;

    emulator().injectFault("refuse_grant", 1);
    EXPECT_EQ(login.finish(emulator().grant(*address)), "Google Drive refused: access_denied");
    EXPECT_EQ(login.finish("http://127.0.0.1?code=abc&state=another-login"),
              "The answer belongs to another login: open the address again");
    emulator().injectFault("invalid_grant", 1, "/o/oauth2/token");
    EXPECT_EQ(login.finish(emulator().grant(*address)), "Token has been expired or revoked.");
    EXPECT_TRUE(supervisor().isStorageLocal());

    // The code is traded with the verifier of the address's challenge, or the service refuses it.
    const auto refused = login.finish(emulator().grant(*address));
    ASSERT_EQ(refused, std::nullopt) << *refused;
    EXPECT_TRUE(supervisor().isStorageGDrive());
    EXPECT_EQ(supervisor().lowLevelGetNumberPreferencesDataForKey("CurrentStorageType"),
              PlistValue(static_cast<std::int64_t>(StorageType::GDrive)));
    EXPECT_EQ(login.accountName(), "owner@example.com");
    EXPECT_FALSE(storedRefreshToken().empty());
    EXPECT_FALSE(supervisor().lowLevelGetStringPreferencesDataForKey(GDriveLogin::kLoginVerifierKey));
    EXPECT_EQ(emulator().paths(), (std::vector<std::string>{"/Stowhaven/", deviceFolder()}));

    login.logOut();
    EXPECT_TRUE(storedRefreshToken().empty());
    EXPECT_TRUE(supervisor().isStorageLocal());
}

}  // namespace
}  // namespace stowhaven
