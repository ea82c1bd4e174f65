// Sessions through their keyed archive and history text, as devices write and read them.

#include "archive/HistoryText.h"
#include "archive/KeyedArchiver.h"
#include "core/BackupSession.h"
#include "core/ModelClasses.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/PhotoVideoAlbum.h"
#include "items/PreferenceFile.h"
#include "items/RepositorySource.h"
#include "items/SHSHBlob.h"
#include "items/WebClip.h"
#include "platform/UserDefaults.h"
#include "support/SampleSessions.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

std::shared_ptr<BackupSession> throughHistoryText(const ArchiveValue& root) {
    const auto text = HistoryText::encode(root);
    if (!text) return nullptr;
    const auto decoded = HistoryText::decode(*text, modelClasses());
    return decoded ? decoded->object<BackupSession>() : nullptr;
}

// Writes the keys it is given under the session's class, as older versions of the
// program and hand-edited files have them.
class ArchivedKeys final : public Codable {
public:
    explicit ArchivedKeys(ArchiveValue::Dictionary keys) : keys_(std::move(keys)) {}
    std::vector<std::string> classChain() const override { return {"BackupSession", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override {
        for (const auto& [key, value] : keys_) coder.encodeObject(value, key);
    }

private:
    ArchiveValue::Dictionary keys_;
};

class BackupSessionArchiveTest : public ::testing::Test {
protected:
    std::shared_ptr<BackupSession> fullSession() { return test::fullSession(); }

    void storeSetting(const char* key, PlistValue value) { UserDefaults::standard().set(key, std::move(value)); }

    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
};

TEST_F(BackupSessionArchiveTest, AFileEngineSessionKeepsEveryArchivedField) {
    const auto written = fullSession();
    const auto read = throughHistoryText(written);
    ASSERT_TRUE(read);

    // An album comes back as its photos and their size, a folder as its selected contents;
    // the choice of them is not archived.
    const ArchivableFolder& folder = *read->archivableFolders()->front();
    ASSERT_EQ(folder.contentItems().size(), 1u);
    EXPECT_EQ(folder.contentItems().front()->name(), "Chime.m4r");
    const PhotoVideoAlbum& album = *read->photoVideoAlbums()->front();
    EXPECT_EQ(album.photos(), (std::vector<std::string>{"IMG_0001.JPG", "IMG_0002.JPG"}));
    EXPECT_EQ(album.photoSize(), 4.5);
    EXPECT_EQ(album.size(), 4.5);
    EXPECT_TRUE(album.isAllAcccounted());
    // Archived again, the rest of what was read makes the very archive it came from: no
    // field is lost or changed on the way.
    read->setPhotoVideoAlbums(written->photoVideoAlbums());
    read->setArchivableFolders(written->archivableFolders());
    EXPECT_EQ(KeyedArchiver::archivedPlist(read), KeyedArchiver::archivedPlist(written));

    // What reading makes of the fields.
    EXPECT_EQ(read->title(), written->title()) << "the padlock is not doubled";
    EXPECT_EQ(read->preferencesFileObjects().size(), 2u);
    EXPECT_TRUE(read->hasAppDataIndexed());
    for (const StockDataSet set : kStockDataSets) {
        EXPECT_TRUE(read->hasData(set)) << stockDataSetName(set);
        EXPECT_EQ(read->dataSize(set), 1.0 + static_cast<double>(set)) << stockDataSetName(set);
    }
    EXPECT_EQ(read->repositorySources()->front()->name(), "Repo.Example.Org");
    const Application& application = *read->applications()->front();
    EXPECT_EQ(application.installDate(), Date(441763200)) << "written as an integer, read as seconds";
    EXPECT_EQ(application.totalBytes(), 12.5 * 1024 * 1024 + 300 * 1024);
    EXPECT_FALSE(application.isSelected());
    EXPECT_EQ(read->SHSHBlobs()->front()->deviceType(), "iPhone7,2-8.1.2");
}

TEST_F(BackupSessionArchiveTest, TheArchiveNamesTheClassChainsFoundationExpects) {
    const auto archive = KeyedArchiver::archivedPlist(fullSession());
    ASSERT_TRUE(archive);
    const Array& objects = *archive->asDictionary()->at("$objects").asArray();
    const auto objectAt = [&](const PlistValue& reference) -> const Dictionary& {
        return *objects.at(*reference.asUid()).asDictionary();
    };
    const auto classesOf = [&](const PlistValue& reference) {
        return objectAt(objectAt(reference).at("$class")).at("$classes");
    };
    const auto& session = archive->asDictionary()->at("$top").asDictionary()->at("root");
    EXPECT_EQ(classesOf(session), (Array{"BackupSession", "NSObject"}));
    const auto& applications = objectAt(session).at("applications");
    EXPECT_EQ(classesOf(applications), (Array{"NSMutableArray", "NSArray", "NSObject"}));
    const auto& application = objectAt(applications).at("NS.objects").asArray()->front();
    EXPECT_EQ(classesOf(application), (Array{"Application", "SelectableItem", "NSObject"}));
    EXPECT_TRUE(objectAt(application).at("installDate").isInteger()) << "an integer call, not an object";
    EXPECT_EQ(classesOf(objectAt(session).at("rawData")), (Array{"NSMutableString", "NSString", "NSObject"}));
    EXPECT_TRUE(objectAt(session).at("nbPackages").isInteger());
    EXPECT_TRUE(objectAt(session).at("fCalendar").isBoolean());
}

TEST_F(BackupSessionArchiveTest, OldArchivesReadTheirRetiredForms) {
    const auto archived = std::make_shared<ArchivedKeys>(ArchiveValue::Dictionary{
        {"version", "5"},
        {"memo", "Written before descriptions had their own key"},
        {"sessionDate", Date(300000000)},
        {"repositorySources", ArchiveValue::Array{"# a comment", "repo.example.org ./", "http://apt.example.net/"}},
        {"springBoardData",
         ArchiveValue::Dictionary{
             {"/var/mobile/Library/SpringBoard/IconState.plist", ArchiveValue::Dictionary{}},
             {"/var/mobile/Library/SpringBoard/applicationstate.plist", ArchiveValue::Dictionary{}},
             {"/var/mobile/Library/SpringBoard/LockBackground.cpbitmap", ArchiveValue()},
             {"/var/mobile/Library/Preferences/com.apple.springboard.plist", ArchiveValue::Dictionary{}}}}});
    const auto oldNote = std::make_shared<ArchivedKeys>(ArchiveValue::Dictionary{
        {"springBoardData", ArchiveValue::Dictionary{{"SPRINGBOARD", ArchiveValue::Dictionary{{"a", 1}}},
                                                     {"/var/mobile/notes.txt", ArchiveValue()}}}});
    const auto read = throughHistoryText(archived);
    ASSERT_TRUE(read);

    EXPECT_EQ(read->quickDescription(), "Written before descriptions had their own key");
    ASSERT_EQ(read->repositorySources()->size(), 2u);
    EXPECT_EQ(read->repositorySources()->at(0)->link(), "http://apt.example.net/");
    EXPECT_EQ(read->repositorySources()->at(1)->link(), "http://repo.example.org");
    EXPECT_EQ(read->repositorySources()->at(1)->name(), "Repo.Example.Org");
    EXPECT_EQ(read->repositorySources()->at(1)->distribution(), "./");

    std::vector<std::string> springboardFiles;
    for (const auto& [path, data] : *read->springBoardData()) springboardFiles.push_back(path);
    EXPECT_EQ(springboardFiles, (std::vector<std::string>{"/var/mobile/Library/SpringBoard/IconState.plist",
                                                          "/var/mobile/Library/SpringBoard/applicationstate.plist"}));
    EXPECT_EQ(read->springboardDataObjects().size(), 2u);
    EXPECT_TRUE(read->hasPrefsFilesData()) << "a session of version 5 answers true without files";
    EXPECT_EQ(throughHistoryText(oldNote)->springBoardData()->size(), 2u) << "an old note's whole springboard stays";
}

// The padlock of an encrypted title shows in the history view's program test.
TEST_F(BackupSessionArchiveTest, TitlesOfEncryptedAndUntitledSessions) {
    const auto titleRead = [](std::optional<std::string> title, std::optional<std::string> key,
                              std::optional<Date> date) {
        const auto session = std::make_shared<BackupSession>();
        session->setTitle(std::move(title));
        session->setEncryptionKey(std::move(key));
        session->setSessionDate(date);
        return throughHistoryText(session)->title();
    };
    EXPECT_EQ(titleRead("Open", std::nullopt, std::nullopt), "Open");
    const auto untitled = titleRead(std::nullopt, std::nullopt, Date(0));
    ASSERT_TRUE(untitled);
    EXPECT_TRUE(untitled->starts_with("200")) << *untitled;
    EXPECT_NE(untitled->find(" @ "), std::string::npos) << *untitled;
    EXPECT_EQ(titleRead(std::nullopt, std::nullopt, std::nullopt), std::nullopt)
        << "without a date there is nothing to name it by";
}

TEST_F(BackupSessionArchiveTest, AnAddressBookSessionReadOnAFileEngineHoldsNoDataSets) {
    supervisor_.setStorageToAddressbook();
    const std::string text = *HistoryText::encode(fullSession());
    supervisor_.setStorageToLocal();

    const auto read = HistoryText::decode(text, modelClasses())->object<BackupSession>();
    ASSERT_TRUE(read);
    EXPECT_EQ(read->archivableFolders(), std::nullopt) << "written on file engines only";
    EXPECT_EQ(read->photoVideoAlbums(), std::nullopt);
    for (const StockDataSet set : kStockDataSets) {
        EXPECT_FALSE(read->hasData(set)) << stockDataSetName(set);
        EXPECT_EQ(read->dataSize(set), 0) << stockDataSetName(set);
    }
    EXPECT_FALSE(read->hasAppDataIndexed());
    EXPECT_EQ(read->rawData(), fullSession()->rawData()) << "the package list is there on every engine";
}

TEST_F(BackupSessionArchiveTest, TheRestoreDefaultsAndTheSizesDecideTheDataSets) {
    const auto written = fullSession();
    written->setDataSize(StockDataSet::Notes, 0);
    written->setHasData(StockDataSet::Maps, false);
    storeSetting("Calendar_Restore", false);
    storeSetting("Chat_Restore", true);
    storeSetting("Videos_Restore", Array{});
    storeSetting("Photos_Restore", Array{"Camera Roll"});

    const auto read = throughHistoryText(written);
    ASSERT_TRUE(read);
    EXPECT_FALSE(read->hasCalendarData()) << "turned off in the defaults";
    EXPECT_TRUE(read->hasChatData());
    EXPECT_FALSE(read->hasNotesData()) << "no size, no data";
    EXPECT_TRUE(read->hasMapsData()) << "the archived flag doesn't count";
    EXPECT_FALSE(read->hasVideosData()) << "an empty list of albums";
    EXPECT_TRUE(read->hasPhotosData());
    EXPECT_TRUE(read->hasPhoneData()) << "on a phone";
}

TEST_F(BackupSessionArchiveTest, OnlyAPhoneShowsPhoneDataAndNoAlbumsMeansNoMedia) {
    DeviceFactsReader::pin(DeviceFacts{"0123", "Ann's iPad", "iPad4,1", "8.1.2"});
    scope_.restartSupervisor();
    const auto written = fullSession();
    written->setPhotoVideoAlbums(BackupSession::AlbumList{});

    const auto read = throughHistoryText(written);
    ASSERT_TRUE(read);
    EXPECT_FALSE(read->hasPhoneData());
    EXPECT_FALSE(read->hasPhotosData()) << "no albums were written";
    EXPECT_FALSE(read->hasVideosData());
    EXPECT_EQ(read->photosDataSize(), 1.0 + static_cast<double>(StockDataSet::Photos));
    EXPECT_TRUE(read->hasCalendarData());
}

TEST_F(BackupSessionArchiveTest, AValueOfTheWrongKindReadsAsAbsent) {
    const auto archived =
        std::make_shared<ArchivedKeys>(ArchiveValue::Dictionary{{"title", 42},
                                                                {"applications", "not a list"},
                                                                {"preferencesData", ArchiveValue::Array{1, 2}},
                                                                {"sessionDate", "yesterday"},
                                                                {"rawData", "Foo\tcom.foo\t1\tme\tTweaks\t(null)\n"}});
    const auto read = throughHistoryText(archived);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->title(), std::nullopt);
    EXPECT_EQ(read->applications(), std::nullopt);
    EXPECT_EQ(read->preferencesData(), std::nullopt);
    EXPECT_EQ(read->sessionDate(), std::nullopt);
    EXPECT_EQ(read->rawData(), "Foo\tcom.foo\t1\tme\tTweaks\t(null)\n");
}

}  // namespace
}  // namespace stowhaven
