// The Box engine on the Box emulator: the storage contract, then what is Box's own: tokens
// that expire and refresh tokens good for one use, retried requests, hostile and
// broken replies, the base folders by name, a restore's walk, and the terminal login.

#include "servers/CloudEngineTest.h"

#include "core/BackupSession.h"
#include "platform/FileManager.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageLayout.h"
#include "storage/box/BoxHelper.h"
#include "storage/box/BoxLogin.h"
#include "storage/box/BoxTokens.h"
#include "support/BoxEmulator.h"
#include "support/CapturedLog.h"
#include "support/FolderSnapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <any>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// Box as a login leaves it: a refresh token the emulator issued, Box the current engine.
class BoxEngine final : public EngineUnderTest {
public:
    using Helper = BoxHelper;

    explicit BoxEngine(test::SupervisorScope& scope) {
        emulator.exportEnvironment();
        scope.supervisor().lowLevelStorePreferencesData(PlistValue(emulator.issueTokens().refreshToken),
                                                        BoxTokens::kRefreshTokenKey);
        scope.supervisor().setStorageToBox();
    }
    std::shared_ptr<StorageHelperProtocol> start() override { return BoxHelper::createBoxHelper(); }

    test::BoxEmulator emulator;
};

INSTANTIATE_TEST_SUITE_P(Box, StorageEngineContractTest, ::testing::Values(cloudEngineKind<BoxEngine>("Box")),
                         engineKindName);

class BoxEngineTest : public CloudEngineTest<BoxEngine> {
protected:
    std::string storedRefreshToken() {
        return supervisor().lowLevelGetStringPreferencesDataForKey(BoxTokens::kRefreshTokenKey).value_or("");
    }
};

TEST_F(BoxEngineTest, AnExpiredAccessTokenIsRefreshedAndEachNewRefreshTokenKeptSinceTheOldIsSpent) {
    ASSERT_FALSE(start()->hasError()) << error();
    const std::string spent = storedRefreshToken();
    emulator().expireAccessToken();
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("after the expiry", date); })) << error();
    EXPECT_NE(storedRefreshToken(), spent);

    ASSERT_FALSE(start()->hasError()) << "the next start refreshes with the token kept: " << error();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{StorageLayout::historyFileName(date)});

    // A spent refresh token is refused: the service's words, and local storage for this run.
    supervisor().lowLevelStorePreferencesData(PlistValue(spent), BoxTokens::kRefreshTokenKey);
    start();
    EXPECT_EQ(engine_->errorMessage(), "Invalid refresh token");
    EXPECT_TRUE(supervisor().isStorageLocal());
}

TEST_F(BoxEngineTest, BusyAndUnavailableRepliesAreRetried) {
    ASSERT_FALSE(start()->hasError()) << error();
    emulator().injectFault("status_503", 1, "/api/2.0/files/content");
    emulator().injectFault("status_429", 1, "/2.0/folders");
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); })) << error();
    ASSERT_TRUE(succeeds([&] { engine_->createDirectoryDated(date); })) << error();
    EXPECT_TRUE(emulator().waitForLine("POST /api/2.0/files/content"));
    EXPECT_TRUE(emulator().waitForLine("POST /api/2.0/files/content")) << "the upload was sent again";
    const std::string part = temporaryFile("NOTES.idx", "NOTES-001\n");
    EXPECT_TRUE(succeeds([&] { engine_->uploadFile(part, date, std::nullopt); })) << "into the folder made";

    start()->loadMostRecentBackupSession();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{StorageLayout::historyFileName(date)});
}

TEST_F(BoxEngineTest, HostileAndBrokenRepliesAreRefusedWithAMessageAndNothingLandsOutsideTheTemporaryFolder) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); }));
    const auto before = test::snapshot(scope_.path("/"));

    // Listings name a "STOWHAVEN" folder of id "../../x", and files "..", "a/b" and "$(touch pwned)".
    test::CapturedLog log;
    emulator().injectFault("hostile_listing", 1000, "/2.0/folders");
    ASSERT_FALSE(start()->hasError()) << error();
    engine_->loadMostRecentBackupSession();
    engine_->retrieveRestOfBackupHistory();
    const auto files = engine_->existingFiles();
    EXPECT_EQ(files.back(), StorageLayout::historyFileName(date));
    for (const char* refused : {"..", "a/b"}) EXPECT_EQ(std::count(files.begin(), files.end(), refused), 0) << refused;
    EXPECT_TRUE(log.contains("Refused the listed item <STOWHAVEN> of id <../../x>"));
    expectNothingWrittenOutsideTheTemporaryFolder(before);
    emulator().injectFault("hostile_listing", 0);

    expectBrokenRepliesRefused("/2.0/folders");
}

TEST_F(BoxEngineTest, TheBaseFolderIsFoundInAnyCasingAndAnOlderVersionsDeviceFolderTakesTheDevicesName) {
    const std::string history = StorageLayout::historyFileName(Date(700000000));
    emulator().addFile("/stowHAVEN/" + supervisor().deviceUID() + "/" + history, "from an older version");
    ASSERT_FALSE(start()->hasError()) << error();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{history});
    const auto renamed = request([&] { engine_->loadBackupDetailsForDevice(supervisor().deviceName()); });
    EXPECT_EQ(std::get<std::vector<std::string>>(renamed.object), std::vector<std::string>{history});
    EXPECT_TRUE(request([&] { engine_->loadBackupDetailsForDevice(supervisor().deviceUID()); }).failed);
}

// A restore fetches the ids of the session's files in one walk: after it, no folder needs
// to be listed again to fetch them.
TEST_F(BoxEngineTest, ARestoreFetchesTheSessionsFilesByTheIdsOfOneWalk) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    storeSession(date, "the history");

    start()->preloadFileRefUsingDate(date);
    emulator().injectFault("malformed_json", 1000, "/2.0/folders");
    for (const std::string kind : {"NOTES", "PHOTOS"}) {
        const auto part = request([&] { engine_->loadFile(kind + "-001", date, kind); });
        ASSERT_TRUE(part.succeeded) << error();
        EXPECT_EQ(FileManager::contentsOfFile(std::get<std::string>(part.object)), "the " + kind);
        EXPECT_FALSE(engine_->hasError());
    }
}

// Box's listing gives no size to fetch by, so the banner counts on the length the reply gives.
TEST_F(BoxEngineTest, ADownloadsBannerShowsItsPercentOfTheLengthTheServerGives) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    storeSession(date, "the history");
    std::vector<std::string> banners;
    const auto observer = NotificationCenter::defaultCenter().addObserver(
        "UPDATE_TRANSFER_BANNER", nullptr, [&](const Notification& notification) {
            if (const auto* text = std::any_cast<std::string>(&notification.object)) banners.push_back(*text);
        });
    const auto part = request([&] { engine_->loadFile("NOTES-001", date, std::string("NOTES")); });
    scope_.serveMainQueue();
    NotificationCenter::defaultCenter().removeObserver(observer);
    ASSERT_TRUE(part.succeeded) << error();
    EXPECT_NE(std::find_if(banners.begin(), banners.end(),
                           [](const std::string& banner) { return banner.starts_with("DL: 100%"); }),
              banners.end())
        << testing::PrintToString(banners);
}

TEST_F(BoxEngineTest, TheTerminalLoginTradesTheCodeOfItsOwnAddressAndARefusalEndsWithTheServicesWords) {
    supervisor().lowLevelStorePreferencesData(PlistValue(), BoxTokens::kRefreshTokenKey);
    supervisor().setStorageToLocal();
    BoxLogin login;
    std::string failure;
    const auto address = login.authorizationAddress(failure);
    ASSERT_TRUE(address) << failure;

    emulator().injectFault("refuse_grant", 1);
    EXPECT_EQ(login.finish(emulator().grant(*address)), "The user denied access to your application");
    EXPECT_EQ(login.finish("http://localhost?code=abc&state=another-login"),
              "The answer belongs to another login: open the address again");
    EXPECT_TRUE(supervisor().isStorageLocal());

    const auto refused = login.finish(emulator().grant(*address));
    ASSERT_EQ(refused, std::nullopt) << *refused;
    EXPECT_TRUE(supervisor().isStorageBox());
    EXPECT_EQ(supervisor().lowLevelGetNumberPreferencesDataForKey("CurrentStorageType"),
              PlistValue(static_cast<std::int64_t>(StorageType::Box)));
    EXPECT_EQ(login.accountName(), "owner@example.com");
    EXPECT_FALSE(storedRefreshToken().empty());
}

}  // namespace
}  // namespace stowhaven
