// Sessions made in the same second on a file engine. The tests' clock stands still, so
// every session of a test is made in the same second.

#include "core/ModelClasses.h"
#include "support/CatalogueFixture.h"

namespace stowhaven {
namespace {

class SessionStampTest : public test::CatalogueFixture {};

TEST_F(SessionStampTest, TwoBackupsInOneSecondAreBothKeptUnderStampsASecondApart) {
    manager().loadPackages();
    std::vector<std::shared_ptr<BackupSession>> sessions;
    for (const char* title : {"First", "Second"}) {
        manager().setBackupTitle(title);
        sessions.push_back(manager().createBackupSession(true));
        manager().storeBackupData();
    }

    EXPECT_EQ(sessions[1]->sessionDate()->timeIntervalSinceDate(*sessions[0]->sessionDate()), 1.0);
    for (const auto& session : sessions) {
        const auto text = FileManager::contentsOfFile(localStoragePath() + "/" +
                                                      StorageLayout::historyFileName(*session->sessionDate()));
        const auto root = text ? HistoryText::decode(*text, modelClasses()) : std::nullopt;
        const auto stored = root ? root->object<BackupSession>() : nullptr;
        ASSERT_TRUE(stored);
        EXPECT_EQ(stored->title(), session->title());
    }
    EXPECT_EQ(engine_->existingFiles().size(), 2u);
}

}  // namespace
}  // namespace stowhaven
