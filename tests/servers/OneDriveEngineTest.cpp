// The OneDrive engine on the OneDrive emulator: the storage contract, then what is OneDrive's
// own: access tokens refreshed by their expiry and after a 401, the retry rule (eleven tries,
// a throttling reply's wait, a cancel ending it), hostile and broken replies and downloads
// sent elsewhere, files stored under their names with ".pdf" added, a restore's walk, and
// the terminal login.

#include "servers/CloudEngineTest.h"

#include "core/BackupSession.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageLayout.h"
#include "storage/onedrive/SkyDriveHelper.h"
#include "storage/onedrive/SkyDriveLogin.h"
#include "storage/onedrive/SkyDriveRetryRule.h"
#include "storage/onedrive/SkyDriveTokens.h"
#include "support/CapturedLog.h"
#include "support/Eventually.h"
#include "support/FolderSnapshot.h"
#include "support/OneDriveEmulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// OneDrive as a login leaves it: a token pair the emulator issued with its expiry, OneDrive
// the current engine.
class OneDriveEngine final : public EngineUnderTest {
public:
    using Helper = SkyDriveHelper;

    explicit OneDriveEngine(test::SupervisorScope& scope) {
        emulator.exportEnvironment();
        const test::OAuthTokens tokens = emulator.issueTokens();
        Supervisor& supervisor = scope.supervisor();
        supervisor.lowLevelStorePreferencesData(PlistValue(tokens.accessToken), SkyDriveTokens::kAccessTokenKey);
        supervisor.lowLevelStorePreferencesData(PlistValue(tokens.refreshToken), SkyDriveTokens::kRefreshTokenKey);
        supervisor.lowLevelStorePreferencesData(PlistValue(Platform::current().clock().date().dateByAddingTimeInterval(
                                                    static_cast<double>(tokens.expiresIn))),
                                                SkyDriveTokens::kExpiryDateKey);
        supervisor.setStorageToSkyDrive();
    }
    std::shared_ptr<StorageHelperProtocol> start() override { return SkyDriveHelper::createSkyDriveHelper(); }

    test::OneDriveEmulator emulator;
};

INSTANTIATE_TEST_SUITE_P(OneDrive, StorageEngineContractTest,
                         ::testing::Values(cloudEngineKind<OneDriveEngine>("OneDrive")), engineKindName);

class OneDriveEngineTest : public CloudEngineTest<OneDriveEngine> {
protected:
    void TearDown() override { SkyDriveRetryRule::setPauseForTesting(SkyDriveRetryRule::kPause); }

    std::string stored(const char* key) {
        return supervisor().lowLevelGetStringPreferencesDataForKey(key).value_or("");
    }
    std::string devicePath() { return "/Stowhaven/" + supervisor().deviceName() + "/"; }
};

TEST_F(OneDriveEngineTest, AnAccessTokenIsRefreshedOnceItsExpiryHasPassedAndAfterTheServiceRefusesIt) {
    ASSERT_FALSE(start()->hasError()) << error();
    const std::string first = stored(SkyDriveTokens::kAccessTokenKey);

    // Two hours on, the stored expiry has passed: the token is refreshed before the request
    // goes out.
    scope_.services.clock.time += std::chrono::hours(2);
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->createDirectoryDated(date); })) << error();
    EXPECT_TRUE(emulator().waitForLine("GET /oauth20_token.srf?"));
    const std::string second = stored(SkyDriveTokens::kAccessTokenKey);
    EXPECT_NE(second, first);
    EXPECT_GT(supervisor().lowLevelGetDatePreferencesDataForKey(SkyDriveTokens::kExpiryDateKey),
              Platform::current().clock().date());

    // The service ends the token early: the 401 brings a refresh and the request again.
    emulator().expireAccessToken();
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("after the expiry", date); })) << error();
    EXPECT_NE(stored(SkyDriveTokens::kAccessTokenKey), second);
    ASSERT_FALSE(start()->hasError()) << "the next start goes on with the tokens kept: " << error();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{StorageLayout::historyFileName(date)});

    // A refused refresh: the service's words, and local storage for this run.
    emulator().expireAccessToken();
    emulator().injectFault("invalid_grant", 1, "/oauth20_token.srf");
    start();
    EXPECT_EQ(engine_->errorMessage(), "The user could not be authenticated or the grant is expired.");
    EXPECT_TRUE(supervisor().isStorageLocal());
}

TEST_F(OneDriveEngineTest, FailuresAreTriedElevenTimesAThrottlingWaitIsTheServicesFigurePlusAMinuteAndACancelEndsIt) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    // A 503 with the service's Retry-After of 0 costs no wait.
    emulator().injectFault("status_503", 1, "/v5.0/");
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); })) << error();
    EXPECT_TRUE(emulator().waitForLine("PUT /v5.0/"));
    EXPECT_TRUE(emulator().waitForLine("PUT /v5.0/")) << "the upload was sent again";
    EXPECT_EQ(emulator().paths().back(), devicePath() + StorageLayout::historyFileName(date) + ".pdf");

    // A connection dropped on every try: eleven tries, then a failure with the error; the
    // session stored before stays whole.
    SkyDriveRetryRule::setPauseForTesting(std::chrono::milliseconds(0));
    ASSERT_TRUE(succeeds([&] { engine_->createDirectoryDated(date); })) << error();
    emulator().injectFault("drop_mid_body", SkyDriveRetryRule::kMaximumRetries + 1, "/v5.0/");
    const std::string part = temporaryFile("NOTES.idx", std::string(64 * 1024, 'n'));
    const auto dropped = request([&] { engine_->uploadFile(part, date, std::nullopt); });
    EXPECT_TRUE(dropped.failed);
    EXPECT_TRUE(engine_->hasError());
    for (int tries = 0; tries <= SkyDriveRetryRule::kMaximumRetries; ++tries) {
        EXPECT_TRUE(emulator().waitForLine("PUT /v5.0/")) << "try " << tries;
    }
    start()->loadMostRecentBackupSession();
    EXPECT_EQ(FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(date)),
              "the history");
    const auto paths = emulator().paths();
    EXPECT_EQ(
        std::count_if(paths.begin(), paths.end(), [](const std::string& path) { return path.ends_with(".idx.pdf"); }),
        0);

    // A throttled request waits the figure of the service's message plus 60 seconds, unless
    // the job is canceled, which ends the wait at once.
    test::CapturedLog log;
    emulator().injectThrottling(30, 1, "/v5.0/");
    auto throttled = std::async(std::launch::async,
                                [&] { return request([&] { engine_->createDirectoryDated(Date(810000000)); }); });
    ASSERT_TRUE(test::eventually([&] { return log.contains("Throttling: Retry 0/10 after 90 seconds"); }));
    supervisor().handleProgressCanceled();
    const auto canceled = throttled.get();
    supervisor().resetCancelStatus();
    EXPECT_FALSE(canceled.succeeded) << "the request was tried again after the wait";
    EXPECT_EQ(engine_->errorMessage(), "Operation canceled!");
}

TEST_F(OneDriveEngineTest, HostileAndBrokenRepliesAreRefusedWithAMessageAndNothingLandsOutsideTheTemporaryFolder) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); })) << error();
    const auto before = test::snapshot(scope_.path("/"));

    // Listings name a "Stowhaven" folder of id "../../x", and files "..", "a/b" and
    // "$(touch pwned)" of ids outside the service's shape, whose bytes are there to fetch.
    test::CapturedLog log;
    emulator().injectFault("hostile_listing", 1000, "/v5.0/");
    ASSERT_FALSE(start()->hasError()) << error();
    engine_->loadMostRecentBackupSession();
    engine_->retrieveRestOfBackupHistory();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{StorageLayout::historyFileName(date)});
    EXPECT_TRUE(log.contains("Refused the listed item <Stowhaven> of id <../../x>"));
    EXPECT_TRUE(log.contains("Refused the listed item <$(touch pwned)> of id <file.hostile.2>"));
    expectNothingWrittenOutsideTheTemporaryFolder(before, "hostile\n");
    emulator().injectFault("hostile_listing", 0);

    // A file's content sent to plain http on another host is not fetched.
    FileManager::removeItem(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(date));
    emulator().injectFault("foreign_redirect", 1, "/v5.0/");
    start()->loadMostRecentBackupSession();
    EXPECT_EQ(engine_->errorMessage(), "OneDrive sent the download to an address that isn't secure");
    EXPECT_FALSE(FileManager::fileExists(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(date)));

    expectBrokenRepliesRefused("/v5.0/");
}

// A restore reads the session's folders in one walk: after it, no folder needs to be listed
// again to fetch its files. Files lie under their names with ".pdf" added, in whatever case.
TEST_F(OneDriveEngineTest, ARestoreFetchesTheSessionsFilesByTheEntriesOfOneWalkWhateverTheCaseOfTheirPdfSuffix) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    storeSession(date, "the history");
    const std::string stamp = StorageLayout::stamp(date);
    const auto paths = emulator().paths();
    for (const std::string& stored : {StorageLayout::historyFileName(date), stamp + "/NOTES/NOTES-001"}) {
        EXPECT_NE(std::find(paths.begin(), paths.end(), devicePath() + stored + ".pdf"), paths.end()) << stored;
    }
    const Date newer(900000000);
    emulator().addFile(devicePath() + StorageLayout::historyFileName(newer) + ".PDF", "newer, by another version");

    // The newest history file, stored in upper case, is fetched under the name it was sent with.
    start()->loadMostRecentBackupSession();
    EXPECT_EQ(engine_->existingFiles(),
              (std::vector<std::string>{StorageLayout::historyFileName(date), StorageLayout::historyFileName(newer)}));
    EXPECT_EQ(FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(newer)),
              "newer, by another version");
    engine_->preloadFileRefUsingDate(date);
    emulator().injectFault("malformed_json", 1000, "/v5.0/");
    for (const std::string kind : {"NOTES", "PHOTOS"}) {
        const auto part = request([&] { engine_->loadFile(kind + "-001", date, kind); });
        ASSERT_TRUE(part.succeeded) << error();
        EXPECT_EQ(FileManager::contentsOfFile(std::get<std::string>(part.object)), "the " + kind);
        EXPECT_FALSE(engine_->hasError());
    }
}

TEST_F(OneDriveEngineTest,
       TheTerminalLoginTradesTheCodeOfItsOwnAddressMakesTheDeviceFolderAndARefusalEndsWithTheServicesWords) {
    SkyDriveTokens::unlink();
    supervisor().setStorageToLocal();
    SkyDriveLogin login;
    std::string problem;
    const auto address = login.authorizationAddress(problem);
    ASSERT_TRUE(address) << problem;

    emulator().injectFault("refuse_grant", 1);
    EXPECT_EQ(login.finish(emulator().grant(*address)),
              "The user has denied access to the scope requested by the client application.");
    EXPECT_EQ(login.finish(emulator().address() + "/oauth20_desktop.srf?code=abc&state=another-login"),
              "The answer belongs to another login: open the address again");
    emulator().injectFault("invalid_grant", 1, "/oauth20_token.srf");
    EXPECT_EQ(login.finish(emulator().grant(*address)), "The user could not be authenticated or the grant is expired.");
    EXPECT_TRUE(supervisor().isStorageLocal());
    EXPECT_EQ(stored(SkyDriveTokens::kAccessTokenKey), "");

    // A first login from this device makes its folder and succeeds.
    const auto refused = login.finish(emulator().grant(*address));
    ASSERT_EQ(refused, std::nullopt) << *refused;
    EXPECT_TRUE(supervisor().isStorageSkyDrive());
    EXPECT_EQ(supervisor().lowLevelGetNumberPreferencesDataForKey("CurrentStorageType"),
              PlistValue(static_cast<std::int64_t>(StorageType::SkyDrive)));
    EXPECT_EQ(login.accountName(), "Stowhaven Tester");
    EXPECT_EQ(emulator().paths(), (std::vector<std::string>{"/Stowhaven/", devicePath()}));

    login.logOut();
    EXPECT_TRUE(supervisor().isStorageLocal());
    EXPECT_EQ(stored(SkyDriveTokens::kRefreshTokenKey), "");
}

}  // namespace
}  // namespace stowhaven
