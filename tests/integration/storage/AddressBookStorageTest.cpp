// The address book as storage, on a sandbox device's own contacts database: the record of
// each device and its note, the history it keeps, and the owner's contacts beside it.

#include "archive/HistoryText.h"
#include "backup/BackupOperation.h"
#include "core/SessionHistory.h"
#include "platform/Strings.h"
#include "platform/addressbook/AddressBook.h"
#include "platform/plist/PlistCodec.h"
#include "storage/addressbook/ABAddressBookHelper.h"
#include "support/CatalogueFixture.h"
#include "support/OldFormatNote.h"
#include "support/OperationRun.h"
#include "support/SqlRows.h"

#include <map>
#include <random>

namespace stowhaven {
namespace {

constexpr const char* kDeviceFirstName = "Haven_0123456789abcdef0123456789abcdef01234567";
constexpr const char* kPackageLine = "Substrate\tmobilesubstrate\t0.9.5000\tme\tDevelopment\tfirmware\n";

class AddressBookStorageTest : public test::CatalogueFixture {
protected:
    AddressBookStorageTest() {
        addOwnersContacts();
        ownersRowsBefore_ = ownersRows();
        scope_.supervisor().setStorageToAddressbook();
        scope_.services.clock.time = std::chrono::system_clock::from_time_t(1795000000);
    }
    ~AddressBookStorageTest() override {
        EXPECT_EQ(ownersRows(), ownersRowsBefore_) << "the owner's contacts stay as they were";
        ABAddressBookHelper::destroyShared();
    }

    std::string folder() const { return device_.path("/var/mobile/Library/AddressBook"); }
    std::vector<std::string> rows(const std::string& query) const {
        return test::sqlRows(folder() + "/AddressBook.sqlitedb", query);
    }

    // The owner's people, one of them found by the lookup of the program's last name through
    // the organisation, and one with the program's first name; a group of the owner's.
    void addOwnersContacts() const {
        const auto book = AddressBook::open(folder());
        ASSERT_TRUE(book);
        const auto ann = ABRecord::createPerson();
        ann->setValue(kABPersonFirstNameProperty, "Ann");
        ann->setValue(kABPersonLastNameProperty, "Calloway");
        ann->setValue(kABPersonOrganizationProperty, "Stow Marine");
        ann->setValue(kABPersonNoteProperty, "Allergic to walnuts");
        ann->setMultiValue(kABPersonURLProperty, {{"_$!<Work>!$_", "https://stowmarine.example"}});
        const auto haven = ABRecord::createPerson();
        haven->setValue(kABPersonFirstNameProperty, "Haven");
        haven->setValue(kABPersonLastNameProperty, "Brightwater");
        const auto family = ABRecord::createGroup();
        family->setValue(kABGroupNameProperty, "Family");
        family->addMember(ann);
        for (const auto& record : {ann, haven, family}) book->addRecord(record);
        ASSERT_TRUE(book->save());
    }

    // Every row of the owner's contacts, as the database holds it.
    std::vector<std::string> ownersRows() const {
        auto people = rows("SELECT * FROM ABPerson WHERE Last <> 'Stow' OR Last IS NULL ORDER BY ROWID");
        for (const auto& row : rows("SELECT v.* FROM ABMultiValue v JOIN ABPerson p ON p.ROWID = v.record_id "
                                    "WHERE p.Last <> 'Stow' ORDER BY v.UID")) {
            people.push_back(row);
        }
        for (const auto& row : rows("SELECT g.*, m.member_id FROM ABGroup g LEFT JOIN ABGroupMembers m "
                                    "ON m.group_id = g.ROWID WHERE g.Name = 'Family'")) {
            people.push_back(row);
        }
        return people;
    }

    // "First|Nickname|Organization" of the program's records.
    std::vector<std::string> ownRecords() const {
        return rows("SELECT First, Nickname, Organization FROM ABPerson WHERE Last = 'Stow' ORDER BY ROWID");
    }

    std::string noteOf(const std::string& firstName) const {
        const auto notes = rows("SELECT Note FROM ABPerson WHERE Last = 'Stow' AND First = '" + firstName + "'");
        return notes.empty() ? "" : notes.front();
    }

    std::vector<double> datesInNoteOf(const std::string& firstName) const {
        std::vector<double> dates;
        for (const auto& session : SessionHistory::fromNote(noteOf(firstName))) {
            dates.push_back(session->sessionDate()->timeIntervalSince1970());
        }
        return dates;
    }

    // A record of the program's as an older version or another device left it.
    void addOwnRecord(const std::string& firstName, const std::string& note, const std::string& organization = "") {
        const auto book = AddressBook::open(folder());
        const auto record = ABRecord::createPerson();
        record->setValue(kABPersonFirstNameProperty, firstName);
        record->setValue(kABPersonLastNameProperty, "Stow");
        if (!note.empty()) record->setValue(kABPersonNoteProperty, note);
        if (!organization.empty()) record->setValue(kABPersonOrganizationProperty, organization);
        book->addRecord(record);
        ASSERT_TRUE(book->save());
    }

    static std::string noteOfSessions(const CydiaFileManager::Sessions& sessions) {
        return *HistoryText::encode(ArchiveValue::mutableArray(ArchiveValue::arrayOf(sessions)));
    }

    void backUpAt(std::time_t time) {
        scope_.services.clock.time = std::chrono::system_clock::from_time_t(time);
        runOperation(std::make_shared<BackupOperation>());
    }

    // Contacts shown from an Exchange account that syncs them.
    void turnActiveSyncOn() const {
        using Dictionary = PlistValue::Dictionary;
        const std::string preferences = device_.path("/var/mobile/Library/Preferences/");
        PlistCodec::writeFile(preferences + "com.apple.PeoplePicker.plist",
                              Dictionary{{"displayedGroupRepresentation", Dictionary{{"AccountIdentifier", "EAS-7"}}}},
                              PlistFormat::Binary, 0644);
        const PlistValue::Array accounts = {
            Dictionary{{"Identifier", "LOCAL"}, {"Type", "Local"}},
            Dictionary{{"Identifier", "EAS-7"},
                       {"Type", "Exchange"},
                       {"Enabled Dataclasses",
                        PlistValue::Array{"com.apple.Dataclass.Mail", "com.apple.Dataclass.Contacts"}}}};
        PlistCodec::writeFile(preferences + "com.apple.accountsettings.plist", Dictionary{{"Accounts", accounts}},
                              PlistFormat::Binary, 0644);
    }

    std::vector<std::string> ownersRowsBefore_;
};

TEST_F(AddressBookStorageTest, TheFirstBackupMakesTheRecordTheSecondAddsToItsNoteAndTheRolloverTrimsIt) {
    ABAddressBookHelper::createABAddressBookHelper();
    manager().loadPackages();
    EXPECT_TRUE(manager().isGenericData()) << "no record of this device yet";

    backUpAt(1795000000);
    EXPECT_TRUE(manager().hasSuccessfullySaveData());
    ASSERT_EQ(ownRecords(), std::vector<std::string>{std::string(kDeviceFirstName) + "|Test iPhone|Larkmoor, Inc."});
    EXPECT_EQ(datesInNoteOf(kDeviceFirstName), std::vector<double>{1795000000});
    EXPECT_EQ(rows("SELECT g.Name FROM ABGroup g JOIN ABGroupMembers m ON m.group_id = g.ROWID "
                   "JOIN ABPerson p ON p.ROWID = m.member_id WHERE p.Last = 'Stow'"),
              std::vector<std::string>{"Stowhaven Data"});

    backUpAt(1795003600);
    EXPECT_EQ(ownRecords().size(), 1u) << "the same record";
    EXPECT_EQ(datesInNoteOf(kDeviceFirstName), (std::vector<double>{1795000000, 1795003600}));
    EXPECT_EQ(rows("SELECT COUNT(*) FROM ABGroup WHERE Name = 'Stowhaven Data'"), std::vector<std::string>{"1"});

    // The rollover rewrites the note with the sessions kept.
    scope_.supervisor().setMaximumBackupToKeep(1);
    backUpAt(1795007200);
    EXPECT_EQ(datesInNoteOf(kDeviceFirstName), std::vector<double>{1795007200});
    EXPECT_EQ(manager().backupSessions().size(), 1u);
}

TEST_F(AddressBookStorageTest, AGenericRecordIsReadAtStartAndStaysWhenTheDeviceGetsItsOwn) {
    const auto older = sessionOf(700000000, kPackageLine);
    const std::string genericNote = noteOfSessions({older});
    addOwnRecord("Haven", genericNote);
    ABAddressBookHelper::createABAddressBookHelper();

    manager().loadPackages();
    ASSERT_TRUE(manager().currentBackupSession());
    EXPECT_EQ(manager().currentBackupSession()->rawData(), kPackageLine);
    EXPECT_TRUE(manager().isGenericData());

    backUpAt(1795000000);
    EXPECT_EQ(ownRecords(), (std::vector<std::string>{"Haven|NULL|NULL",
                                                      std::string(kDeviceFirstName) + "|Test iPhone|Larkmoor, Inc."}));
    EXPECT_EQ(noteOf("Haven"), genericNote);
    EXPECT_EQ(datesInNoteOf(kDeviceFirstName), (std::vector<double>{978307200 + 700000000, 1795000000}));
}

TEST_F(AddressBookStorageTest, AnOldFormatNoteBecomesOneSessionWithItsDateAndTheOrganisationsSources) {
    addOwnRecord(kDeviceFirstName, test::oldFormatNote(device_.root() + "/..", kPackageLine),
                 "repo.example.org ./, # old one, http://apt.example.net/ ./");
    ABAddressBookHelper::createABAddressBookHelper();

    manager().loadPackages();

    const auto session = manager().currentBackupSession();
    ASSERT_TRUE(session);
    EXPECT_EQ(manager().backupSessions().size(), 1u);
    EXPECT_EQ(session->sessionDate()->timeIntervalSince1970(), 1275393600) << "2010-06-01 12:00:00 UTC";
    EXPECT_EQ(session->rawData(), kPackageLine);
    ASSERT_TRUE(session->repositorySources());
    ASSERT_EQ(session->repositorySources()->size(), 2u);
    ASSERT_TRUE(session->springBoardData());
    EXPECT_TRUE(session->springBoardData()->contains("SPRINGBOARD"));
    EXPECT_FALSE(manager().isGenericData());
    EXPECT_TRUE(manager().currentApplications().empty());
}

// Exchange keeps notes of 8620 characters at most; a note's length is a multiple of four,
// so the first that is too long has 8624.
TEST_F(AddressBookStorageTest, UnderActiveSyncANoteOf8620CharactersIsStoredAndALongerOneRefused) {
    turnActiveSyncOn();
    const auto book = ABAddressBookHelper::createABAddressBookHelper();
    manager().loadPackages();
    EXPECT_TRUE(book->isActiveSyncEnabled());

    // A description of random letters, as long as gives the note each length wanted: the
    // note grows with it, a byte of the stream for about every two letters.
    const auto session = sessionOf(700000000, kPackageLine);
    manager().processBackupData({session}, false);
    std::mt19937 random(11);
    std::string letters;
    for (int count = 0; count < 16000; ++count) letters += static_cast<char>('a' + random() % 26);
    const auto noteLengthWith = [&](std::size_t count) {
        session->setQuickDescription(letters.substr(0, count));
        return manager().getABDataFormat()->size();
    };
    std::size_t low = 0;
    std::size_t high = letters.size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        (noteLengthWith(middle) < 8620 ? low = middle + 1 : high = middle);
    }
    std::map<std::size_t, std::string> fillerOfLength;
    for (std::size_t count = low > 40 ? low - 40 : 0; count < low + 80; ++count) {
        fillerOfLength.try_emplace(noteLengthWith(count), letters.substr(0, count));
    }
    ASSERT_TRUE(fillerOfLength.contains(8620) && fillerOfLength.contains(8624));

    session->setQuickDescription(fillerOfLength[8624]);
    manager().storeBackupData();
    EXPECT_EQ(manager().errorMsg(), Strings::format("ACTIVE_SYNC_LIMIT", 8624));
    EXPECT_TRUE(manager().backupSessions().empty()) << "the refused session leaves the history";
    EXPECT_TRUE(ownRecords().empty());

    session->setQuickDescription(fillerOfLength[8620]);
    manager().processBackupData({session}, false);
    manager().storeBackupData();
    EXPECT_FALSE(manager().errorMsg());
    EXPECT_EQ(noteOf(kDeviceFirstName).size(), 8620u);
}

TEST_F(AddressBookStorageTest, ARefusedSaveTakesTheNewSessionAwayAndKeepsTheNoteBefore) {
    ABAddressBookHelper::createABAddressBookHelper();
    manager().loadPackages();
    backUpAt(1795000000);
    const std::string noteBefore = noteOf(kDeviceFirstName);
    // The database refuses the next change of a note.
    test::sqlRows(folder() + "/AddressBook.sqlitedb",
                  "CREATE TRIGGER refuse BEFORE UPDATE OF Note ON ABPerson "
                  "BEGIN SELECT RAISE(ABORT, 'refused'); END;");

    backUpAt(1795003600);

    EXPECT_FALSE(manager().hasSuccessfullySaveData());
    ASSERT_EQ(manager().backupSessions().size(), 1u);
    EXPECT_EQ(manager().backupSessions().back()->sessionDate()->timeIntervalSince1970(), 1795000000);
    EXPECT_EQ(noteOf(kDeviceFirstName), noteBefore);
}

TEST_F(AddressBookStorageTest, DeviceRecordsAreListedRenamedAndDeleted) {
    addOwnRecord("Haven_Other iPad", noteOfSessions({sessionOf(700000000, kPackageLine)}));
    const auto book = ABAddressBookHelper::createABAddressBookHelper();
    manager().loadPackages();
    backUpAt(1795000000);

    // The older naming has taken the underscore; the owner's contact found by its
    // organisation is listed by its first name, as the lookup has always done.
    book->loadAvailableDeviceBackups();
    EXPECT_EQ(book->availableDeviceBackups(), (std::vector<std::string>{"Ann", "Haven_Other_iPad", kDeviceFirstName}));
    EXPECT_EQ(book->getNoteFromDeviceBackupAtIndex(kDeviceFirstName), noteOf("Haven_Other_iPad"))
        << "the first record of the program's, whatever the name";

    book->renameEntryWithFirstName("Haven_Other_iPad", "Haven_Old iPad");
    EXPECT_EQ(book->getNoteForABRecordWithFirstName("haven_old ipad"), noteOf("Haven_Old iPad"));
    EXPECT_EQ(book->getCurrentABRecordNote(), noteOf(kDeviceFirstName)) << "this device's record stays current";

    book->deleteEntryWithFirstName("Haven_Old iPad");
    EXPECT_EQ(ownRecords(), std::vector<std::string>{std::string(kDeviceFirstName) + "|Test iPhone|Larkmoor, Inc."});
    EXPECT_TRUE(rows("SELECT * FROM ABGroup WHERE Name = 'Stowhaven Data'").empty());
    EXPECT_EQ(book->availableDeviceBackups(), (std::vector<std::string>{"Ann", kDeviceFirstName}));

    book->deleteAllStowhavenABEntries();
    EXPECT_TRUE(ownRecords().empty());
}

// A program that has looked up no record yet renames; the owner's contact listed beside the
// records is no record of the program's to delete.
TEST_F(AddressBookStorageTest, AFreshStartRenamesARecordAndNeverDeletesTheOwnersContact) {
    addOwnRecord("Haven_Other_iPad", "");
    const auto book = ABAddressBookHelper::createABAddressBookHelper();
    book->loadAvailableDeviceBackups();
    ASSERT_EQ(book->availableDeviceBackups(), (std::vector<std::string>{"Ann", "Haven_Other_iPad"}));
    book->deleteEntryWithFirstName("Ann");
    book->renameEntryWithFirstName("Haven_Other_iPad", "Haven_Old_iPad");
    EXPECT_EQ(book->availableDeviceBackups(), (std::vector<std::string>{"Ann", "Haven_Old_iPad"}));
}

TEST_F(AddressBookStorageTest, WithoutAccessToTheContactsStorageFallsToLocal) {
    scope_.services.contactsAccess.status = ContactsAuthorization::Denied;
    EXPECT_FALSE(ABAddressBookHelper::createABAddressBookHelper()->isValid());
    scope_.serveMainQueue();
    EXPECT_TRUE(scope_.supervisor().isStorageLocal());
    ASSERT_FALSE(scope_.screens.alerts->alerts.empty());
    EXPECT_EQ(scope_.screens.alerts->alerts.back().title, "Contacts Access Error");

    scope_.supervisor().setStorageToAddressbook();
    scope_.services.contactsAccess.status = ContactsAuthorization::NotDetermined;
    scope_.services.contactsAccess.grants = true;
    EXPECT_TRUE(ABAddressBookHelper::createABAddressBookHelper()->isValid());
    EXPECT_TRUE(scope_.supervisor().isStorageAddressbook());
}

}  // namespace
}  // namespace stowhaven
