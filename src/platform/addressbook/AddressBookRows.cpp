#include "platform/addressbook/AddressBookRows.h"

#include "platform/Failure.h"
#include "platform/SqliteDatabase.h"
#include "platform/addressbook/AddressBookSchema.h"

namespace stowhaven {

namespace {

// Steps onto the one row a statement selects.
bool stepOntoRow(SqliteDatabase::Statement& statement, std::string* error) {
    switch (statement.step()) {
        case SqliteDatabase::Statement::Step::Row:
            return true;
        case SqliteDatabase::Statement::Step::Done:
            return fail(error, "the row is gone");
        case SqliteDatabase::Statement::Step::Error:
            break;
    }
    return fail(error, statement.errorMessage());
}

}  // namespace

std::optional<std::vector<int>> AddressBookRows::rowIDs(ABRecordType type, std::string* error) {
    auto statement = database_.prepare(type == ABRecordType::Person ? "SELECT ROWID FROM ABPerson ORDER BY ROWID"
                                                                    : "SELECT ROWID FROM ABGroup ORDER BY ROWID");
    std::vector<int> rows;
    SqliteDatabase::Statement::Step step;
    while ((step = statement.step()) == SqliteDatabase::Statement::Step::Row) {
        rows.push_back(static_cast<int>(statement.columnInt(0)));
    }
    if (step == SqliteDatabase::Statement::Step::Done) return rows;
    fail(error, statement.errorMessage());
    return std::nullopt;
}

std::shared_ptr<ABRecord> AddressBookRows::load(ABRecordType type, int rowID, std::string* error) {
    auto record = type == ABRecordType::Person ? ABRecord::createPerson() : ABRecord::createGroup();
    record->recordID_ = rowID;
    record->inBook_ = true;
    if (type == ABRecordType::Group) {
        auto statement = database_.prepare("SELECT Name FROM ABGroup WHERE ROWID = ?");
        statement.bindInt(1, rowID);
        if (!stepOntoRow(statement, error)) return nullptr;
        if (auto name = statement.columnText(0)) record->valueFor(kABGroupNameProperty).single = std::move(name);
        return record;
    }
    if (!loadPersonColumns(*record, error) || !loadMultiValue(*record, kABPersonURLProperty, error) ||
        !loadImage(*record, error)) {
        return nullptr;
    }
    return record;
}

bool AddressBookRows::loadPersonColumns(ABRecord& person, std::string* error) {
    std::string columns;
    for (const auto& column : AddressBookSchema::kPersonColumns) {
        columns += columns.empty() ? "" : ", ";
        columns += column.name;
    }
    auto statement = database_.prepare("SELECT " + columns + " FROM ABPerson WHERE ROWID = ?");
    statement.bindInt(1, person.recordID_);
    if (!stepOntoRow(statement, error)) return false;
    for (std::size_t i = 0; i < AddressBookSchema::kPersonColumns.size(); ++i) {
        auto value = statement.columnText(static_cast<int>(i));
        if (value) person.valueFor(AddressBookSchema::kPersonColumns[i].property).single = std::move(value);
    }
    return true;
}

bool AddressBookRows::loadMultiValue(ABRecord& person, ABPropertyID property, std::string* error) {
    auto statement = database_.prepare(
        "SELECT ABMultiValueLabel.value, ABMultiValue.value FROM ABMultiValue"
        " LEFT JOIN ABMultiValueLabel ON ABMultiValueLabel.ROWID = ABMultiValue.label"
        " WHERE record_id = ? AND property = ? ORDER BY identifier, UID");
    statement.bindInt(1, person.recordID_).bindInt(2, property);
    ABMultiValue entries;
    SqliteDatabase::Statement::Step step;
    while ((step = statement.step()) == SqliteDatabase::Statement::Step::Row) {
        entries.push_back({statement.columnText(0).value_or(""), statement.columnText(1).value_or("")});
    }
    if (step != SqliteDatabase::Statement::Step::Done) return fail(error, statement.errorMessage());
    if (!entries.empty()) person.valueFor(property).multiple = std::move(entries);
    return true;
}

bool AddressBookRows::loadImage(ABRecord& person, std::string* error) {
    auto statement = database_.prepare("SELECT data FROM images.ABFullSizeImage WHERE record_id = ?");
    statement.bindInt(1, person.recordID_);
    switch (statement.step()) {
        case SqliteDatabase::Statement::Step::Row:
            person.image_ = statement.columnBlob(0).value_or("");
            return true;
        case SqliteDatabase::Statement::Step::Done:
            return true;
        case SqliteDatabase::Statement::Step::Error:
            break;
    }
    return fail(error, statement.errorMessage());
}

}  // namespace stowhaven
