#include "platform/addressbook/AddressBook.h"

#include "platform/ShellQuote.h"
#include "support/FakeServices.h"
#include "support/SandboxDevice.h"
#include "support/SqlRows.h"
#include "support/TestFolder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace stowhaven {
namespace {

// TEXT as an SQL string literal.
std::string sqlText(const std::string& text) {
    std::string literal = "'";
    for (char c : text) literal += c == '\'' ? std::string("''") : std::string(1, c);
    return literal + "'";
}

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Rows = std::vector<std::string>;
using People = std::vector<std::shared_ptr<ABRecord>>;

// 2015-01-01 00:00:00.5 UTC, 441763200.5 seconds after the reference date.
const auto kSaveTime = std::chrono::system_clock::from_time_t(1420070400) + std::chrono::milliseconds(500);

std::string hexOf(const std::string& bytes) {
    std::string hex;
    for (unsigned char byte : bytes) hex += fmt::format("{:02X}", byte);
    return hex;
}

std::shared_ptr<ABRecord> person(const std::string& first, const std::string& last) {
    auto record = ABRecord::createPerson();
    record->setValue(kABPersonFirstNameProperty, first);
    record->setValue(kABPersonLastNameProperty, last);
    return record;
}

std::vector<std::optional<std::string>> firstNamesOf(const People& people) {
    std::vector<std::optional<std::string>> names;
    for (const auto& record : people) names.push_back(record->copyValue(kABPersonFirstNameProperty));
    return names;
}

class AddressBookTest : public ::testing::Test {
protected:
    AddressBookTest() { services.clock.time = kSaveTime; }

    std::shared_ptr<AddressBook> openBook() {
        std::string error;
        auto book = AddressBook::open(bookFolder, &error);
        EXPECT_NE(book, nullptr) << error;
        return book;
    }

    // Runs SQL on a connection of the test's own, with the pictures' file attached as the
    // device attaches it; each row as its columns joined by "|".
    Rows query(const std::string& sql) const {
        return test::sqlRows(bookFolder + "/AddressBook.sqlitedb",
                             "ATTACH " + sqlText(bookFolder + "/AddressBookImages.sqlitedb") + " AS images; " + sql);
    }

    test::TestFolder folder;
    test::FakeServices services;
    std::string bookFolder = folder / "Library/AddressBook";
};

TEST_F(AddressBookTest, ANewPersonIsSavedInTheDevicesRowsAndReadBackByAFreshBook) {
    auto book = openBook();
    ASSERT_NE(book, nullptr);
    auto other = person("Ann", "Calloway");
    auto zoe = person("Zoë", "Marchetti");
    zoe->setValue(kABPersonMiddleNameProperty, "Anne");
    zoe->setValue(kABPersonNicknameProperty, "Zo");
    zoe->setValue(kABPersonOrganizationProperty, "Harbour Cafe");
    zoe->setValue(kABPersonNoteProperty, "Allergic to walnuts\nand to 'quotes'");
    const ABMultiValue links{{kABPersonHomePageLabel, "https://zoe.example"},
                             {"_$!<Work>!$_", "https://harbourcafe.example"},
                             {"", "https://plain.example"}};
    ASSERT_TRUE(zoe->setMultiValue(kABPersonURLProperty, links));
    const std::string picture("\xFF\xD8\xFF\0picture\0\xFF\xD9", 14);
    ASSERT_TRUE(zoe->setImageData(picture));
    auto group = ABRecord::createGroup();
    ASSERT_TRUE(group->setValue(kABGroupNameProperty, "Regulars"));
    ASSERT_TRUE(group->addMember(zoe));
    // The group comes first: its member gets a row only later in the same save.
    for (const auto& record : {group, other, zoe}) ASSERT_TRUE(book->addRecord(record));

    std::string error;
    ASSERT_TRUE(book->save(&error)) << error;
    EXPECT_FALSE(book->hasUnsavedChanges());
    ASSERT_EQ(zoe->recordID(), 2);
    ASSERT_EQ(group->recordID(), 1);

    EXPECT_THAT(query("SELECT First, Last, Middle, Organization, Note, Nickname, Kind, CreationDate, ModificationDate"
                      " FROM ABPerson WHERE ROWID = 2"),
                ElementsAre("Zoë|Marchetti|Anne|Harbour Cafe|Allergic to walnuts\nand to 'quotes'|Zo|0|441763200|"
                            "441763200"));
    EXPECT_THAT(
        query("SELECT record_id, property, identifier, typeof(label), ABMultiValueLabel.value, ABMultiValue.value"
              " FROM ABMultiValue LEFT JOIN ABMultiValueLabel ON ABMultiValueLabel.ROWID = label"
              " ORDER BY identifier"),
        ElementsAre("2|22|0|integer|_$!<HomePage>!$_|https://zoe.example",
                    "2|22|1|integer|_$!<Work>!$_|https://harbourcafe.example",
                    "2|22|2|null|NULL|https://plain.example"));
    EXPECT_THAT(query("SELECT ROWID, Name FROM ABGroup"), ElementsAre("1|Regulars"));
    EXPECT_THAT(query("SELECT group_id, member_type, member_id FROM ABGroupMembers"), ElementsAre("1|0|2"));
    EXPECT_THAT(query("SELECT record_id, hex(data) FROM images.ABFullSizeImage"), ElementsAre("2|" + hexOf(picture)));

    auto fresh = openBook();
    const People found = fresh->copyPeopleWithName("zo");
    ASSERT_EQ(found.size(), 1u);
    const auto& read = *found.front();
    EXPECT_EQ(read.recordID(), 2);
    for (ABPropertyID property : {kABPersonFirstNameProperty, kABPersonLastNameProperty, kABPersonMiddleNameProperty,
                                  kABPersonNicknameProperty, kABPersonOrganizationProperty, kABPersonNoteProperty}) {
        EXPECT_EQ(read.copyValue(property), zoe->copyValue(property)) << property;
    }
    EXPECT_EQ(read.copyMultiValue(kABPersonURLProperty), links);
    EXPECT_EQ(read.copyImageData(), picture);
    const People annFound = fresh->copyPeopleWithName("calloway");
    ASSERT_EQ(annFound.size(), 1u);
    EXPECT_FALSE(annFound.front()->hasImageData());
    const People groups = fresh->copyArrayOfAllGroups();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups.front()->copyValue(kABGroupNameProperty), "Regulars");
    EXPECT_FALSE(fresh->hasUnsavedChanges());
}

TEST_F(AddressBookTest, AFailedSaveLeavesBothFilesAsTheyWereAndTheChangesPending) {
    auto book = openBook();
    ASSERT_NE(book, nullptr);
    auto ann = person("Ann", "Calloway");
    ann->setImageData("ann's picture");
    ASSERT_TRUE(book->addRecord(ann));
    ASSERT_TRUE(book->save());
    query("CREATE TRIGGER refuse BEFORE INSERT ON ABGroupMembers BEGIN SELECT RAISE(ABORT, 'refused'); END;");

    auto bea = person("Bea", "Newby");
    bea->setMultiValue(kABPersonURLProperty, {{kABPersonHomePageLabel, "https://bea.example"}});
    bea->setImageData("bea's picture");
    auto group = ABRecord::createGroup();
    group->setValue(kABGroupNameProperty, "Climbing");
    group->addMember(bea);
    ann->setValue(kABPersonLastNameProperty, "Reyes");
    ann->removeImageData();
    ASSERT_TRUE(book->addRecord(bea));
    ASSERT_TRUE(book->addRecord(group));

    std::string error;
    EXPECT_FALSE(book->save(&error));
    EXPECT_THAT(error, HasSubstr("refused"));
    EXPECT_THAT(query("SELECT ROWID, First, Last FROM ABPerson"), ElementsAre("1|Ann|Calloway"));
    EXPECT_THAT(query("SELECT count(*) FROM ABMultiValue UNION ALL SELECT count(*) FROM ABMultiValueLabel"
                      " UNION ALL SELECT count(*) FROM ABGroup"),
                ElementsAre("0", "0", "0"));
    EXPECT_THAT(query("SELECT record_id, data FROM images.ABFullSizeImage"), ElementsAre("1|ann's picture"));
    EXPECT_EQ(bea->recordID(), ABRecord::kABRecordInvalidID);
    EXPECT_EQ(group->recordID(), ABRecord::kABRecordInvalidID);
    EXPECT_EQ(ann->recordID(), 1);
    EXPECT_TRUE(book->hasUnsavedChanges());
    EXPECT_EQ(ann->copyValue(kABPersonLastNameProperty), "Reyes");
}

TEST_F(AddressBookTest, LookupByNameMatchesTheBeginningsOfNameWordsIncludingPendingChanges) {
    auto book = openBook();
    ASSERT_NE(book, nullptr);
    auto ann = person("Ann", "Calloway");
    auto zoe = person("Zoë", "Marchetti");
    zoe->setValue(kABPersonOrganizationProperty, "Harbour Cafe");
    zoe->setValue(kABPersonNicknameProperty, "Bumble");
    zoe->setValue(kABPersonNoteProperty, "Calloway's friend");
    auto malik = person("Malik", "O'Brien");
    malik->setValue(kABPersonMiddleNameProperty, "J.");
    malik->setValue(kABPersonOrganizationProperty, "Larkmoor, Inc.");
    auto calloway = person("Calloway", "Reyes");
    auto freight = ABRecord::createPerson();
    freight->setValue(kABPersonOrganizationProperty, "Calloway Freight");
    for (const auto& record : {ann, zoe, malik, calloway, freight}) ASSERT_TRUE(book->addRecord(record));
    ASSERT_TRUE(book->save());

    // The last name of one person is the first name of another and the organisation of a third.
    EXPECT_EQ(book->copyPeopleWithName("calloway"), (People{ann, calloway, freight}));
    EXPECT_EQ(book->copyPeopleWithName(" bUMB\tharb "), People{zoe});
    EXPECT_EQ(book->copyPeopleWithName("j. o'b malik"), People{malik});
    for (const char* none : {"ann reyes", "alloway", "walnuts", " \t"})
        EXPECT_TRUE(book->copyPeopleWithName(none).empty()) << none;

    // A fresh book answers from the rows, and counts changes not saved yet.
    auto fresh = openBook();
    const People saved = fresh->copyPeopleWithName("calloway");
    EXPECT_THAT(firstNamesOf(saved), ElementsAre("Ann", "Calloway", std::nullopt));
    saved.front()->setValue(kABPersonFirstNameProperty, "Annabel");
    ASSERT_TRUE(fresh->removeRecord(saved[1]));
    EXPECT_THAT(firstNamesOf(fresh->copyPeopleWithName("calloway")), ElementsAre("Annabel", std::nullopt));
}

TEST_F(AddressBookTest, RemovingARecordTakesItsRowsAndLeavesEveryOtherRowAsItWas) {
    auto book = openBook();
    ASSERT_NE(book, nullptr);
    auto ann = person("Ann", "Calloway");
    auto bea = person("Bea", "Newby");
    auto cai = person("Cai", "Reyes");
    auto family = ABRecord::createGroup();
    auto work = ABRecord::createGroup();
    for (const auto& record : {ann, bea, cai}) {
        record->setMultiValue(kABPersonURLProperty, {{kABPersonHomePageLabel, "https://people.example"}});
        record->setImageData("picture");
        ASSERT_TRUE(book->addRecord(record));
    }
    family->addMember(ann);
    family->addMember(bea);
    work->addMember(cai);
    work->addMember(ann);
    ASSERT_TRUE(book->addRecord(family));
    ASSERT_TRUE(book->addRecord(work));
    ASSERT_TRUE(book->save());
    // Groups and people number their rows apart: Family and Ann are both 1, Work and Bea 2.
    ASSERT_EQ(family->recordID(), ann->recordID());
    ASSERT_EQ(work->recordID(), bea->recordID());
    // Rows the book doesn't know: phone numbers, thumbnails, a group in a group.
    query(
        "INSERT INTO ABMultiValue (record_id, property, identifier, label, value) VALUES"
        " (1, 3, 0, NULL, '+44 1'), (2, 3, 0, NULL, '+44 2'), (3, 3, 0, NULL, '+44 3');"
        "INSERT INTO images.ABThumbnailImage VALUES (1, 0, 0, 'thumb 1'), (2, 0, 0, 'thumb 2'), (3, 0, 0, 'thumb 3');"
        "INSERT INTO ABGroupMembers (group_id, member_type, member_id) VALUES (2, 1, 1);");

    ASSERT_TRUE(book->removeRecord(family));
    ASSERT_TRUE(book->removeRecord(bea));
    ASSERT_TRUE(work->addMember(bea)) << "a member removed in the same save isn't written";
    ASSERT_TRUE(book->save());
    EXPECT_THAT(query("SELECT ROWID, First FROM ABPerson"), ElementsAre("1|Ann", "3|Cai"));
    EXPECT_THAT(query("SELECT ROWID FROM ABGroup"), ElementsAre("2"));
    EXPECT_THAT(query("SELECT group_id, member_type, member_id FROM ABGroupMembers ORDER BY UID"),
                ElementsAre("2|0|3", "2|0|1"));
    EXPECT_THAT(query("SELECT record_id, property FROM ABMultiValue ORDER BY UID"),
                ElementsAre("1|22", "3|22", "1|3", "3|3"));
    EXPECT_THAT(query("SELECT record_id, data FROM images.ABFullSizeImage"), ElementsAre("1|picture", "3|picture"));
    EXPECT_THAT(query("SELECT record_id, data FROM images.ABThumbnailImage"), ElementsAre("1|thumb 1", "3|thumb 3"));
    EXPECT_THAT(query("SELECT value FROM ABMultiValueLabel"), ElementsAre("_$!<HomePage>!$_"));
    EXPECT_EQ(bea->recordID(), ABRecord::kABRecordInvalidID);
    EXPECT_EQ(book->copyPeopleWithName("bea"), People{});
    EXPECT_EQ(book->copyArrayOfAllGroups(), People{work});
}

TEST_F(AddressBookTest, ABookLaidOutByTheDeviceBuilderKeepsItsTablesAndItsOtherRows) {
    const auto schema = [&] {
        return query(
            "SELECT name, sql FROM sqlite_master UNION ALL SELECT name, sql FROM images.sqlite_master"
            " ORDER BY name");
    };
    bookFolder = folder / "made/Library/AddressBook";
    ASSERT_NE(openBook(), nullptr);
    const Rows madeSchema = schema();

    const std::string root = folder / "device";
    test::runCommand("cd '" STOWHAVEN_SOURCE_DIR
                     "/tests/fixtures' && python3 -B -c 'from pathlib import Path; "
                     "import sys; from device_builder.address_book import write_address_book; "
                     "write_address_book(Path(sys.argv[1]))' " +
                     ShellQuote::path(root));
    bookFolder = root + "/var/mobile/Library/AddressBook";
    EXPECT_EQ(schema(), madeSchema);
    const auto untouchedRows = [&] {
        Rows rows;
        for (const char* sql :
             {"SELECT * FROM ABPerson WHERE ROWID = 2", "SELECT * FROM ABMultiValue WHERE record_id IN (2, 3)",
              "SELECT * FROM ABMultiValueLabel", "SELECT record_id, format, hex(data) FROM images.ABThumbnailImage"}) {
            const Rows some = query(sql);
            rows.insert(rows.end(), some.begin(), some.end());
        }
        return rows;
    };
    const Rows before = untouchedRows();
    ASSERT_EQ(before.size(), 9u);

    auto book = openBook();
    ASSERT_NE(book, nullptr);
    const People groups = book->copyArrayOfAllGroups();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups.front()->copyValue(kABGroupNameProperty), "Family");
    const People malik = book->copyPeopleWithName("malik");
    ASSERT_EQ(malik.size(), 1u);
    const People ann = book->copyPeopleWithName("ann calloway");
    ASSERT_EQ(ann.size(), 1u);

    services.clock.time += std::chrono::hours(24);
    auto bea = person("Bea", "Newby");
    bea->setMultiValue(kABPersonURLProperty, {{"_$!<Work>!$_", "https://bea.example"}});
    ASSERT_TRUE(book->addRecord(bea));
    ASSERT_TRUE(groups.front()->addMember(bea));
    malik.front()->setValue(kABPersonNoteProperty, "Prefers email");
    ASSERT_TRUE(book->removeRecord(ann.front()));
    std::string error;
    ASSERT_TRUE(book->save(&error)) << error;

    EXPECT_EQ(untouchedRows(), before);
    EXPECT_THAT(query("SELECT ROWID, First, Department, Note, ModificationDate FROM ABPerson ORDER BY ROWID"),
                ElementsAre(::testing::StartsWith("2|Zoë|NULL|Allergic to walnuts|"),
                            "3|Malik|Support|Prefers email|441849600", "4|Bea|NULL|NULL|441849600"));
    EXPECT_THAT(query("SELECT record_id, label, value FROM ABMultiValue WHERE record_id IN (1, 4)"),
                ElementsAre("4|4|https://bea.example"));
    EXPECT_THAT(query("SELECT group_id, member_type, member_id FROM ABGroupMembers"), ElementsAre("1|0|4"));
}

}  // namespace
}  // namespace stowhaven
