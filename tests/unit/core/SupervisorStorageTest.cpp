#include "core/Supervisor.h"
#include "platform/UserDefaults.h"
#include "support/FakeStorageEngine.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

class SupervisorStorageTest : public ::testing::Test {
protected:
    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
    PreferenceStore& settings_ = UserDefaults::standard();
};

TEST_F(SupervisorStorageTest, TheCurrentEngineFollowsTheLiveTypeAndAnUnknownOneWorksOnLocalStorage) {
    const auto local = test::FakeStorageEngine::install(StorageType::Local);
    const auto dropbox = test::FakeStorageEngine::install(StorageType::Dropbox);

    supervisor_.setStorageToDropbox();
    EXPECT_EQ(supervisor_.currentStorageEngine(), dropbox);
    supervisor_.setCurrentStorageType(static_cast<StorageType>(42));
    EXPECT_EQ(supervisor_.currentStorageEngine(), local);
    supervisor_.setStorageToGDrive();
    EXPECT_EQ(supervisor_.currentStorageEngine(), nullptr);
}

TEST_F(SupervisorStorageTest, ALiveChangeStaysUnsavedUntilPersisted) {
    supervisor_.setStorageToSkyDrive();
    EXPECT_TRUE(supervisor_.isStorageSkyDrive());
    EXPECT_FALSE(supervisor_.isStorageSameAsDefault());
    EXPECT_FALSE(settings_.keyExists("CurrentStorageType"));

    supervisor_.persistStorageType();
    EXPECT_EQ(settings_.object("CurrentStorageType"), PlistValue(3));
    EXPECT_TRUE(supervisor_.isStorageSameAsDefault());
}

TEST_F(SupervisorStorageTest, CachesAreFlushedOnTheEnginesMadeSoFarInTheirOrder) {
    auto flushes = std::make_shared<std::vector<std::string>>();
    for (const auto& [type, name] : std::vector<std::pair<StorageType, std::string>>{
             {StorageType::SkyDrive, "SkyDrive"},
             {StorageType::SugarSync, "SugarSync"},
             {StorageType::OwnCloud, "OwnCloud"},
             {StorageType::FTP, "FTP"},
             {StorageType::Dropbox, "Dropbox"},
             {StorageType::Box, "Box"},
             {StorageType::Local, "Local"},
             {StorageType::Addressbook, "Addressbook"},
         }) {
        test::FakeStorageEngine::install(type, name, flushes);
    }
    supervisor_.cloudStorageFlushCache();
    EXPECT_EQ(*flushes, (std::vector<std::string>{"Box", "Dropbox", "FTP", "OwnCloud", "SugarSync", "SkyDrive"}));
}

}  // namespace
}  // namespace stowhaven
