// The Dropbox engine on the Dropbox emulator: the storage contract, then what is Dropbox's
// own: a link the service refuses, busy replies retried, large files in chunks, hostile and
// broken replies, and the terminal login. The program's own tests (CloudStorageProgramTest)
// cut an upload short and take over another device's sessions.

#include "servers/CloudEngineTest.h"

#include "platform/FileManager.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageLayout.h"
#include "storage/dropbox/DropboxCredentials.h"
#include "storage/dropbox/DropboxHelper.h"
#include "storage/dropbox/DropboxLogin.h"
#include "support/DropboxEmulator.h"
#include "support/FolderSnapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <any>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

using namespace std::chrono_literals;

// Dropbox as a login leaves it: a token pair the emulator issued, Dropbox the current engine.
class DropboxEngine final : public EngineUnderTest {
public:
    using Helper = DropboxHelper;

    explicit DropboxEngine(test::SupervisorScope& scope) {
        emulator.exportEnvironment();
        const test::DropboxToken token = emulator.issueToken();
        DropboxCredentials{token.uid, token.token, token.secret}.storeAsCurrent(emulator.appKey());
        scope.supervisor().setStorageToDropbox();
    }
    std::shared_ptr<StorageHelperProtocol> start() override { return DropboxHelper::createDropboxHelper(); }

    test::DropboxEmulator emulator;
};

INSTANTIATE_TEST_SUITE_P(Dropbox, StorageEngineContractTest,
                         ::testing::Values(cloudEngineKind<DropboxEngine>("Dropbox")), engineKindName);

class DropboxEngineTest : public CloudEngineTest<DropboxEngine> {
protected:
    void SetUp() override {
        CloudEngineTest::SetUp();
        // The engine's own retries, 5 seconds apart on a device, follow at once here; they run
        // on the main queue, which a request serves meanwhile.
        AbstractStorageHelper::setRetryDelayForTesting(1ms);
        patience_ = 60s;
    }
    void TearDown() override { AbstractStorageHelper::setRetryDelayForTesting(AbstractStorageHelper::kRetryDelay); }

    std::filesystem::path stored(const std::string& path) { return emulator().filesFolder() / path; }
    std::filesystem::path deviceFolder() { return stored("Stowhaven/" + supervisor().deviceName()); }
};

TEST_F(DropboxEngineTest, ALinkTheServiceRefusesIsDroppedAndLocalStorageTakesOver) {
    ASSERT_FALSE(start()->hasError()) << error();
    EXPECT_EQ(engine_->accountName(), "Zo\u00eb Emulated");

    emulator().injectFault("expire_token", 1, "/1/account/info");
    start();
    EXPECT_NE(error().find("Token is disabled or invalid"), std::string::npos) << error();
    EXPECT_TRUE(supervisor().isStorageLocal());
    EXPECT_FALSE(engine_->isLoggedIn());
    EXPECT_FALSE(DropboxCredentials::saved(emulator().appKey())) << "the link is dropped";

    supervisor().setStorageToDropbox();
    start();
    EXPECT_EQ(engine_->errorMessage(), DropboxHelper::kNotLinkedMessage);
    EXPECT_TRUE(supervisor().isStorageLocal());
}

TEST_F(DropboxEngineTest, BusyAndUnavailableRepliesAreRetried) {
    ASSERT_FALSE(start()->hasError()) << error();
    emulator().injectFault("status_503", 2, "/1/metadata");
    EXPECT_TRUE(succeeds([&] { engine_->loadDefaultBackupDetails(); })) << error();
    emulator().injectFault("status_429", 1, "/1/fileops/create_folder");
    const Date date(800000000);
    EXPECT_TRUE(succeeds([&] { engine_->createDirectoryDated(date); })) << error();
    // A chunk is sent once; the upload as a whole is tried again.
    emulator().injectFault("status_503", 1, "/1/chunked_upload");
    EXPECT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); })) << error();
    EXPECT_TRUE(std::filesystem::is_directory(deviceFolder() / StorageLayout::stamp(date)));
    EXPECT_EQ(FileManager::contentsOfFile(deviceFolder() / StorageLayout::historyFileName(date)), "the history");
}

// One byte over 10 MB: two chunks, the second of one byte, each read at its offset.
TEST_F(DropboxEngineTest, AFileOneByteOverTheChunkSizeGoesInTwoChunksAndComesBackWhole) {
    ASSERT_FALSE(start()->hasError()) << error();
    std::vector<std::string> texts;
    std::mutex textsMutex;
    const auto observer = NotificationCenter::defaultCenter().addObserver(
        "UPDATE_PROGRESS_TEXT", nullptr, [&](const Notification& notification) {
            std::lock_guard lock(textsMutex);
            if (const auto* text = std::any_cast<std::string>(&notification.object)) texts.push_back(*text);
        });
    std::string bytes(10485761, '\0');
    for (std::size_t at = 0; at < bytes.size(); ++at) bytes[at] = static_cast<char>(at * 7 % 251);
    const std::string part = temporaryFile("PHOTOS-001", bytes);
    const Date date(800000000);

    ASSERT_TRUE(succeeds([&] { engine_->uploadFile(part, date, std::string("PHOTOS")); })) << error();
    scope_.serveMainQueue();
    NotificationCenter::defaultCenter().removeObserver(observer);
    EXPECT_TRUE(emulator().waitForLine("POST /1/chunked_upload"));
    EXPECT_TRUE(emulator().waitForLine("POST /1/chunked_upload"));
    EXPECT_TRUE(emulator().waitForLine("POST /1/commit_chunked_upload/"));
    EXPECT_FALSE(FileManager::fileExists(part)) << "the local file goes once it is stored";
    EXPECT_NE(std::find_if(texts.begin(), texts.end(),
                           [](const std::string& text) { return text.ends_with("2 chunks of ~10Mb [2/2]"); }),
              texts.end());

    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); }));
    const auto fetched = request([&] { engine_->loadFile("PHOTOS-001", date, std::string("PHOTOS")); });
    ASSERT_TRUE(fetched.succeeded) << error();
    EXPECT_EQ(FileManager::contentsOfFile(std::get<std::string>(fetched.object)), bytes);
}

TEST_F(DropboxEngineTest, HostileAndBrokenRepliesAreRefusedWithAMessageAndNothingLandsOutsideTheTemporaryFolder) {
    ASSERT_FALSE(start()->hasError()) << error();
    const Date date(800000000);
    ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory("the history", date); }));
    const auto before = test::snapshot(scope_.path("/"));

    // Listings with "..", "a/b", "$(touch pwned).stowhvn" and paths outside the folder.
    emulator().injectFault("hostile_listing", 1000, "/1/metadata");
    start();
    EXPECT_NE(error().find("holds an entry that is not in it"), std::string::npos) << error();
    EXPECT_TRUE(supervisor().isStorageLocal());
    EXPECT_TRUE(engine_->existingFiles().empty());
    emulator().injectFault("hostile_listing", 0);
    supervisor().setStorageToDropbox();
    ASSERT_FALSE(start()->hasError()) << error();
    EXPECT_TRUE(request([&] { engine_->loadFile("../../outside", date, std::nullopt); }).failed);
    EXPECT_TRUE(request([&] { engine_->loadBackupDetailsForDevice(".."); }).failed);
    expectNothingWrittenOutsideTheTemporaryFolder(before);

    expectBrokenRepliesRefused("/1/metadata", Told::InTheReport);
}

TEST_F(DropboxEngineTest, TheTerminalLoginTakesTheAddressOfItsOwnNonceAndARefusalEndsWithAMessage) {
    DropboxCredentials::unlinkAll();
    supervisor().setStorageToLocal();
    DropboxLogin login;
    std::string failure;
    const auto address = login.authorizationAddress(failure);
    ASSERT_TRUE(address) << failure;

    emulator().injectFault("refuse_grant", 1);
    EXPECT_EQ(login.finish(emulator().grant(*address)), "The access was refused on the Dropbox page");
    const std::string granted = emulator().grant(*address);
    const std::string query = granted.substr(granted.find('?') + 1);
    EXPECT_EQ(login.finish("db-" + emulator().appKey() + "://1/connect?oauth_token=t&oauth_token_secret=s&state=x"),
              "The answer belongs to another login: open the address again");
    EXPECT_TRUE(supervisor().isStorageLocal());

    emulator().injectFault("expire_token", 1, "/1/account/info");
    const auto expired = login.finish(query);
    EXPECT_NE(expired.value_or("").find("Token is disabled or invalid"), std::string::npos) << expired.value_or("");
    EXPECT_FALSE(DropboxCredentials::saved(emulator().appKey())) << "a refused link is not kept";

    const auto refused = login.finish(query);
    ASSERT_EQ(refused, std::nullopt) << *refused;
    EXPECT_TRUE(supervisor().isStorageDropbox());
    EXPECT_EQ(supervisor().lowLevelGetNumberPreferencesDataForKey("CurrentStorageType"),
              PlistValue(static_cast<std::int64_t>(StorageType::Dropbox)));
    EXPECT_EQ(login.accountName(), "Zo\u00eb Emulated");
    EXPECT_TRUE(DropboxCredentials::saved(emulator().appKey()));
}

}  // namespace
}  // namespace stowhaven
