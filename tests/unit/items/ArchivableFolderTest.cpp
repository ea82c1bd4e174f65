#include "items/ArchivableFolder.h"
#include "platform/UserDefaults.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

class ArchivableFolderTest : public ::testing::Test {
protected:
    // The Cydia ringtones' place, with three tones of the user's own.
    std::shared_ptr<ArchivableFolder> ringtones() {
        auto folder =
            std::make_shared<ArchivableFolder>("Ringtones", std::nullopt, 4, "/Library/Ringtones/", false, true, false);
        folder->setExists(true);
        std::vector<std::shared_ptr<SelectableItem>> tones;
        for (const char* name : {"Chime.m4r", "Gong.m4r", "Whistle.m4r"}) {
            tones.push_back(std::make_shared<SelectableItem>(name));
            tones.back()->setSize(1);
        }
        folder->setContentItems(tones);
        return folder;
    }

    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
};

TEST_F(ArchivableFolderTest, TheItemsNamedInTheDefaultOfTheirSideAreChosen) {
    supervisor_.lowLevelStorePreferencesData(PlistValue::Array{"Chime.m4r", "Whistle.m4r"},
                                             "DefaultRingtonesCydia_Backup");
    auto folder = ringtones();
    folder->processDefaultsForBackup(true);
    EXPECT_TRUE(folder->contentItems()[0]->isSelected());
    EXPECT_FALSE(folder->contentItems()[1]->isSelected());
    auto restored = ringtones();
    restored->processDefaultsForBackup(false);
    EXPECT_TRUE(restored->contentItems()[1]->isSelected()) << "no default of the restore side: as they were";
}

TEST_F(ArchivableFolderTest, APlaceWithoutItemsFollowsTheListOfTypes) {
    ArchivableFolder hosts("Hosts file", std::nullopt, 33, "/private/etc/hosts", true, false, false);
    hosts.setExists(true);
    hosts.processDefaultsForBackup(false);
    EXPECT_FALSE(hosts.isSelected()) << "no restore list: not chosen for restore";
    hosts.processDefaultsForBackup(true);
    EXPECT_TRUE(hosts.isSelected());
    supervisor_.lowLevelStorePreferencesData(PlistValue::Array{"14"}, "Backup_ArchivableFolders");
    ArchivableFolder::resetDefaultLists();
    hosts.processDefaultsForBackup(true);
    EXPECT_FALSE(hosts.isSelected()) << "the list names other types";
}

TEST_F(ArchivableFolderTest, ACopyForASessionTakesOnlyTheChosenItems) {
    auto folder = ringtones();
    folder->contentItems()[0]->setSelected(false);
    const auto copy = folder->duplicateForBackup();
    ASSERT_EQ(copy->contentItems().size(), 2u);
    EXPECT_EQ(copy->contentItems()[0]->name(), "Gong.m4r");
    EXPECT_EQ(folder->contentItems().size(), 3u) << "the device's list stays whole";
    EXPECT_EQ(copy->selectedItemsSize(), 2);
    EXPECT_EQ(folder->totalSize(), 3);
}

}  // namespace
}  // namespace stowhaven
