// The selectable items through a keyed archive, one class at a time, and what a tweak
// place chooses of its items.

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/ModelClasses.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/PhotoVideoAlbum.h"
#include "items/RepositorySource.h"
#include "platform/UserDefaults.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

template <typename T>
std::shared_ptr<T> throughArchive(const std::shared_ptr<T>& object) {
    const auto bytes = KeyedArchiver::archivedData(object);
    if (!bytes) return nullptr;
    const auto read = KeyedUnarchiver::unarchiveObjectWithData(*bytes, modelClasses());
    return read ? read->template object<T>() : nullptr;
}

class ItemCodingTest : public ::testing::Test {
protected:
    test::SupervisorScope scope_;
};

TEST_F(ItemCodingTest, AnApplicationsSizesAndNamesFollowItsUnits) {
    auto application = std::make_shared<Application>("Maps Plus");
    application->setLibraryDirSize(0);
    application->setDocumentsDirSize(2);
    application->setDocumentsDirSizeUnit(3);
    EXPECT_EQ(application->archiveName(), "Maps%20Plus.tbz");

    const auto read = throughArchive(application);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->hasDocumentsDir());
    EXPECT_FALSE(read->hasLibraryDir()) << "no size, no folder";
    EXPECT_EQ(read->totalSize(), 2.0 * 1024) << "2 Gb in megabytes";
    EXPECT_EQ(read->displayName(), "Maps Plus") << "the name stands in for a missing display name";
}

TEST_F(ItemCodingTest, SourcesFollowTheSavedListsByTheirKeys) {
    UserDefaults::standard().set("DefaultSources_Restore", Array{"deb:http://a.example/:stable"});
    UserDefaults::standard().set("DefaultSources_Backup", Array{});
    RepositorySource::resetDefaultLists();
    auto source = std::make_shared<RepositorySource>(
        Dictionary{{"URI", "http://a.example/"}, {"Type", "deb"}, {"Distribution", "stable"}});
    EXPECT_FALSE(source->isSelected()) << "an empty backup list chooses nothing";
    EXPECT_TRUE(throughArchive(source)->isSelected());
}

TEST_F(ItemCodingTest, AFolderWithoutSelectableContentKeepsAllItsPaths) {
    auto folder = std::make_shared<ArchivableFolder>("Flex 2", "com.example.flex2", 21, "/var/mobile/Documents/Flex",
                                                     false, false, false);
    folder->setExists(true);
    folder->setContentPaths({"patches.plist", "settings.plist"});
    const auto read = throughArchive(folder);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->packageName(), "com.example.flex2");
    EXPECT_EQ(read->contentPaths(), (std::vector<std::string>{"patches.plist", "settings.plist"}));
    EXPECT_FALSE(read->canSelectContent());
    EXPECT_FALSE(read->isSelected()) << "read back, the item is not selected";
    EXPECT_EQ(ArchivableFolder("Hosts", "", 33, "/private/etc/hosts", true, false, false).packageName(), std::nullopt)
        << "an empty package name is none";
}

TEST_F(ItemCodingTest, AnAlbumWritesOnlyItsSelectedSide) {
    auto album = std::make_shared<PhotoVideoAlbum>("Holiday");
    album->setPhotoSelected(true);
    album->setPhotos({"a.jpg"});
    album->setPhotoSize(2);
    album->setVideos({"b.mov"});
    album->setVideoSize(50);
    album->setEditable(true);

    UserDefaults::standard().set("Photos_Backup", Array{"Holiday"});
    const auto read = throughArchive(album);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isEditable());
    EXPECT_EQ(read->photos(), (std::vector<std::string>{"a.jpg"}));
    EXPECT_TRUE(read->videos().empty());
    EXPECT_EQ(read->size(), 2);
    EXPECT_TRUE(read->isPhotoSelected()) << "named in the list of photo albums";
    EXPECT_FALSE(read->isVideoSelected());
}

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
