#include "platform/addressbook/AddressBookSchema.h"

#include "platform/SqliteDatabase.h"

namespace stowhaven {

namespace {

// The device's own definitions, line breaks included, so that the stored schema reads the
// same whoever made the file.
constexpr const char* kTables = R"(
CREATE TABLE IF NOT EXISTS ABPerson (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, First TEXT, Last TEXT, Middle TEXT,
    Organization TEXT, Department TEXT, Note TEXT, Kind INTEGER, Birthday TEXT, JobTitle TEXT,
    Nickname TEXT, CreationDate INTEGER, ModificationDate INTEGER);
CREATE TABLE IF NOT EXISTS ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, property INTEGER,
    identifier INTEGER, label INTEGER, value TEXT);
CREATE TABLE IF NOT EXISTS ABMultiValueLabel (value TEXT, UNIQUE(value));
CREATE TABLE IF NOT EXISTS ABGroup (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, Name TEXT);
CREATE TABLE IF NOT EXISTS ABGroupMembers (UID INTEGER PRIMARY KEY, group_id INTEGER, member_type INTEGER,
    member_id INTEGER, UNIQUE(group_id, member_type, member_id));
CREATE TABLE IF NOT EXISTS images.ABThumbnailImage (record_id INTEGER, format INTEGER, derived_from_format INTEGER,
    data BLOB, UNIQUE(record_id, format));
CREATE TABLE IF NOT EXISTS images.ABFullSizeImage (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, record_id INTEGER,
    crop_x INTEGER, crop_y INTEGER, crop_width INTEGER, crop_height INTEGER, data BLOB, UNIQUE(record_id));
)";

}  // namespace

bool AddressBookSchema::createMissingTables(SqliteDatabase& database, std::string* error) {
    return database.exec(kTables, error);
}

const char* AddressBookSchema::columnOf(ABRecordType type, ABPropertyID property) {
    if (type == ABRecordType::Group) return property == kABGroupNameProperty ? "Name" : nullptr;
    for (const Column& column : kPersonColumns) {
        if (column.property == property) return column.name;
    }
    return nullptr;
}

bool AddressBookSchema::isMultiValue(ABRecordType type, ABPropertyID property) {
    return type == ABRecordType::Person && property == kABPersonURLProperty;
}

}  // namespace stowhaven
