// The SugarSync engine on the SugarSync emulator: the storage contract, then what is
// SugarSync's own: a token bought with the user's credentials and bought again before it
// ends or once refused, the retry rule and its marker, an upload cut short, hostile and
// broken replies, the device folder of an older version, a restore's walk, the history walk's
// end, and the login.

#include "servers/CloudEngineTest.h"

#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageLayout.h"
#include "storage/sugarsync/SugarSyncHelper.h"
#include "storage/sugarsync/SugarSyncKeys.h"
#include "storage/sugarsync/SugarSyncLogin.h"
#include "support/CapturedLog.h"
#include "support/FolderSnapshot.h"
#include "support/SugarSyncEmulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// SugarSync as a login leaves it: the user's credentials stored, SugarSync the current engine.
class SugarSyncEngine final : public EngineUnderTest {
public:
    using Helper = SugarSyncHelper;

    explicit SugarSyncEngine(test::SupervisorScope& scope) {
        emulator.exportEnvironment();
        scope.supervisor().lowLevelStorePreferencesData(PlistValue(emulator.user()), SugarSyncKeys::kLogin);
        scope.supervisor().lowLevelStorePreferencesData(PlistValue(emulator.password()), SugarSyncKeys::kPassword);
        scope.supervisor().setStorageToSugarSync();
    }
    std::shared_ptr<StorageHelperProtocol> start() override { return SugarSyncHelper::createSugarSyncHelper(); }

    test::SugarSyncEmulator emulator;
};

INSTANTIATE_TEST_SUITE_P(SugarSync, StorageEngineContractTest,
                         ::testing::Values(cloudEngineKind<SugarSyncEngine>("SugarSync")), engineKindName);

class SugarSyncEngineTest : public CloudEngineTest<SugarSyncEngine> {
protected:
    std::optional<Date> storedExpiry() {
        return supervisor().lowLevelGetDatePreferencesDataForKey(SugarSyncKeys::kTokenExpirationDate);
    }
    // How many request lines start with PREFIX before the next one that starts with UNTIL.
    int linesBefore(const std::string& prefix, const std::string& until) {
        int count = 0;
        for (auto line = emulator().waitForLine(""); line && !line->starts_with(until);
             line = emulator().waitForLine("")) {
            count += line->starts_with(prefix) ? 1 : 0;
        }
        return count;
    }
};

// The token is bought again a quarter of an hour before it ends, when the re-login timer
// would have fired, and at once when the service refuses it sooner.
TEST_F(SugarSyncEngineTest, ATokenIsBoughtAgainBeforeItEndsAndOnceTheServiceRefusesIt) {
    auto& clock = scope_.services.clock.time;
    clock = std::chrono::system_clock::now();
    ASSERT_FALSE(start()->hasError()) << error();
    EXPECT_EQ(linesBefore("POST /authorization", "GET /user"), 1);
    clock += std::chrono::minutes(44);
    engine_->refreshFreeSpace();
    EXPECT_EQ(linesBefore("POST /authorization", "GET /user"), 0);
    clock += std::chrono::minutes(2);
    engine_->refreshFreeSpace();
    EXPECT_EQ(linesBefore("POST /authorization", "GET /user"), 1) << "renewed before the request";

    const auto renewed = storedExpiry();
    ASSERT_TRUE(renewed);
    emulator().expireAccessToken();
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("after the expiry", date); })) << error();
    EXPECT_GE(storedExpiry(), renewed);

    start()->loadMostRecentBackupSession();
    EXPECT_EQ(FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(date)),
              "after the expiry");
}

TEST_F(SugarSyncEngineTest, FailedRequestsAreSentAgainElevenTimesInAllThenOnceUntilAReplyReads) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    emulator().injectFault("status_503", 1, "/file/");
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); })) << error();
    ASSERT_TRUE(emulator().waitForLine("PUT /file/"));
    EXPECT_TRUE(emulator().waitForLine("PUT /file/")) << "the data was sent again";
    // The empty reply of the data left the count where it was; a record that reads starts it again.
    engine_->refreshFreeSpace();
    linesBefore("", "GET /user");

    emulator().injectFault("status_503", 1000, "/folder/");
    EXPECT_TRUE(request([&] { engine_->createDirectoryDated(date); }).failed);
    EXPECT_TRUE(error().starts_with("HTTP 503")) << error();
    engine_->refreshFreeSpace();
    EXPECT_EQ(linesBefore("POST /folder/", "GET /user"), 11);
    // The tries are spent: each failure now goes once.
    EXPECT_TRUE(request([&] { engine_->createDirectoryDated(date); }).failed);
    engine_->refreshFreeSpace();
    EXPECT_EQ(linesBefore("POST /folder/", "GET /user"), 1);

    // A reply that reads starts the count again.
    emulator().injectFault("status_503", 0);
    engine_->refreshFreeSpace();
    emulator().injectFault("status_503", 1, "/folder/");
    EXPECT_TRUE(succeeds([&] { engine_->createDirectoryDated(date); })) << error();
}

TEST_F(SugarSyncEngineTest, AnUploadCutShortFailsWithAnErrorAndTheEarlierSessionStaysWhole) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date earlier(700000000);
    const Date later(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the earlier session", earlier); }));

    emulator().injectFault("drop_mid_body", 1000, "/file/");
    const auto cut = request([&] { engine_->uploadBackupHistory(std::string(256 * 1024, 'x'), later); });
    EXPECT_TRUE(cut.failed);
    EXPECT_TRUE(engine_->hasError());
    emulator().injectFault("drop_mid_body", 0);

    start()->loadMostRecentBackupSession();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{StorageLayout::historyFileName(earlier)});
    EXPECT_EQ(FileManager::contentsOfFile(TemporaryDirectory::path() + "/" + StorageLayout::historyFileName(earlier)),
              "the earlier session");
}

TEST_F(SugarSyncEngineTest, HostileAndBrokenRepliesAreRefusedWithAMessageAndNothingLandsOutsideTheTemporaryFolder) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); }));
    const auto before = test::snapshot(scope_.path("/"));

    // Listings lead with folders and files named "..", "a/b", "$(touch pwned)", plain and
    // percent-encoded, and a file whose reference and content are file:///etc/passwd.
    test::CapturedLog log;
    emulator().injectFault("hostile_listing", 1000, "/folder/");
    ASSERT_FALSE(start()->hasError()) << error();
    engine_->loadMostRecentBackupSession();
    engine_->retrieveRestOfBackupHistory();
    const auto files = engine_->existingFiles();
    ASSERT_FALSE(files.empty());
    EXPECT_EQ(files.back(), StorageLayout::historyFileName(date));
    for (const char* refused : {"..", "a/b", "../.."}) {
        EXPECT_EQ(std::count(files.begin(), files.end(), refused), 0) << refused;
    }
    EXPECT_TRUE(log.contains("Refused the listed item <passwd> of reference <file:///etc/passwd>"));
    EXPECT_TRUE(log.contains("Refused the listed item <%2E%2E%2F%2E%2E>"));
    expectNothingWrittenOutsideTheTemporaryFolder(before, "hostile\n");
    emulator().injectFault("hostile_listing", 0);

    const struct {
        const char* fault;
        const char* message;
    } broken[] = {{"malformed_xml", "The reply is no XML"},
                  {"huge_xml", "The reply is larger than"},
                  {"deep_xml", "The reply is nested too deep"}};
    for (const auto& reply : broken) {
        emulator().injectFault(reply.fault, 1000, "/folder/");
        const auto details = request([&] { engine_->loadBackupDetailsForDevice(supervisor().deviceName()); });
        EXPECT_TRUE(details.failed) << reply.fault;
        EXPECT_TRUE(error().starts_with(reply.message)) << reply.fault << ": " << error();
        emulator().injectFault(reply.fault, 0);
    }
}

TEST_F(SugarSyncEngineTest, AnOlderVersionsDeviceFolderTakesTheDevicesName) {
    const std::string history = StorageLayout::historyFileName(Date(700000000));
    emulator().addFile("/Stowhaven/" + supervisor().deviceUID() + "/" + history, "from an older version");
    ASSERT_FALSE(start()->hasError()) << error();
    engine_->loadMostRecentBackupSession();
    EXPECT_EQ(engine_->existingFiles(), std::vector<std::string>{history});
    const auto paths = emulator().paths();
    EXPECT_NE(std::find(paths.begin(), paths.end(), "/Stowhaven/" + supervisor().deviceName() + "/" + history),
              paths.end());
}

// A restore fetches the session's items in one walk: after it, no folder needs to be listed
// again to fetch them.
TEST_F(SugarSyncEngineTest, ARestoreFetchesTheSessionsFilesByTheReferencesOfOneWalk) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    storeSession(date, "the history");

    start()->preloadFileRefUsingDate(date);
    emulator().injectFault("malformed_xml", 1000, "/folder/");
    for (const std::string kind : {"NOTES", "PHOTOS"}) {
        const auto part = request([&] { engine_->loadFile(kind + "-001", date, kind); });
        ASSERT_TRUE(part.succeeded) << error();
        EXPECT_EQ(FileManager::contentsOfFile(std::get<std::string>(part.object)), "the " + kind);
    }
}

// Every session holds files of the same names: once one session's items were read, a file of
// another date still comes from its own session.
// The screens wait for the walk's end, which SugarSync tells even when there was nothing to walk.
TEST_F(SugarSyncEngineTest, TheHistoryWalkTellsItsEndEvenWithNoHistory) {
    ASSERT_FALSE(start()->hasError()) << error();
    ASSERT_TRUE(engine_->existingFiles().empty());
    int ends = 0;
    const auto observer = NotificationCenter::defaultCenter().addObserver("BACKUP_HISTORY_LOADED", nullptr,
                                                                          [&](const Notification&) { ++ends; });
    engine_->retrieveRestOfBackupHistory();
    NotificationCenter::defaultCenter().removeObserver(observer);
    EXPECT_EQ(ends, 1);
}

TEST_F(SugarSyncEngineTest, TheLoginStoresNothingUntilTheCredentialsAreProvedAndTheLogoutForgetsThem) {
    SugarSyncHelper::unlink();
    supervisor().setStorageToLocal();
    SugarSyncLogin login;
    EXPECT_TRUE(login.logIn(emulator().user(), "not the password").value_or("").find("401") != std::string::npos);
    emulator().refuseLogins(11);
    EXPECT_TRUE(login.logIn(emulator().user(), emulator().password()));
    EXPECT_TRUE(supervisor().isStorageLocal());
    for (const char* key : {SugarSyncKeys::kLogin, SugarSyncKeys::kPassword, SugarSyncKeys::kTokenExpirationDate}) {
        EXPECT_FALSE(supervisor().lowLevelKeyExists(key)) << key;
    }

    const auto error = login.logIn(" " + emulator().user() + "\n", emulator().password());
    ASSERT_EQ(error, std::nullopt) << *error;
    EXPECT_TRUE(supervisor().isStorageSugarSync());
    EXPECT_EQ(supervisor().lowLevelGetNumberPreferencesDataForKey("CurrentStorageType"),
              PlistValue(static_cast<std::int64_t>(StorageType::SugarSync)));
    EXPECT_EQ(login.accountName(), emulator().user());
    EXPECT_EQ(supervisor().lowLevelGetStringPreferencesDataForKey(SugarSyncKeys::kPassword), emulator().password());
    EXPECT_TRUE(storedExpiry());
    const auto paths = emulator().paths();
    EXPECT_NE(std::find(paths.begin(), paths.end(), "/Stowhaven/" + supervisor().deviceName() + "/"), paths.end());

    SugarSyncLogin::logOut();
    EXPECT_TRUE(supervisor().isStorageLocal());
    EXPECT_FALSE(supervisor().lowLevelKeyExists(SugarSyncKeys::kPassword));
}

}  // namespace
}  // namespace stowhaven
