#include "platform/addressbook/AddressBookWriter.h"

#include "platform/SqliteDatabase.h"
#include "platform/addressbook/AddressBookSchema.h"

namespace stowhaven {

bool AddressBookWriter::insert(ABRecord& record, std::string* error) {
    if (record.type_ == ABRecordType::Group) {
        auto statement = database_.prepare("INSERT INTO ABGroup (Name) VALUES (?)");
        statement.bindTextOrNull(1, record.copyValue(kABGroupNameProperty));
        if (!statement.run(error)) return false;
        record.recordID_ = static_cast<int>(database_.lastInsertRowID());
        return true;
    }
    std::string columns;
    std::string marks;
    for (const auto& column : AddressBookSchema::kPersonColumns) {
        columns += column.name + std::string(", ");
        marks += "?, ";
    }
    auto statement = database_.prepare("INSERT INTO ABPerson (" + columns +
                                       "Kind, CreationDate, ModificationDate) VALUES (" + marks + "0, ?, ?)");
    int index = 1;
    for (const auto& column : AddressBookSchema::kPersonColumns) {
        statement.bindTextOrNull(index++, record.copyValue(column.property));
    }
    statement.bindInt(index, now_).bindInt(index + 1, now_);
    if (!statement.run(error)) return false;
    record.recordID_ = static_cast<int>(database_.lastInsertRowID());
    if (!record.copyMultiValue(kABPersonURLProperty).empty() && !writeMultiValue(record, kABPersonURLProperty, error)) {
        return false;
    }
    return !record.image_ || writeImage(record, error);
}

bool AddressBookWriter::update(const ABRecord& record, std::string* error) {
    if (!updateColumns(record, error)) return false;
    for (ABPropertyID property : record.changed_) {
        if (AddressBookSchema::isMultiValue(record.type_, property) && !writeMultiValue(record, property, error)) {
            return false;
        }
    }
    return !record.imageChanged_ || writeImage(record, error);
}

bool AddressBookWriter::updateColumns(const ABRecord& record, std::string* error) {
    const bool person = record.type_ == ABRecordType::Person;
    std::string assignments;
    for (ABPropertyID property : record.changed_) {
        if (const char* column = AddressBookSchema::columnOf(record.type_, property)) {
            assignments += assignments.empty() ? "" : ", ";
            assignments += column + std::string(" = ?");
        }
    }
    if (person) assignments += assignments.empty() ? "ModificationDate = ?" : ", ModificationDate = ?";
    if (assignments.empty()) return true;

    auto statement = database_.prepare(std::string("UPDATE ") + (person ? "ABPerson" : "ABGroup") + " SET " +
                                       assignments + " WHERE ROWID = ?");
    int index = 1;
    for (ABPropertyID property : record.changed_) {
        if (AddressBookSchema::columnOf(record.type_, property) != nullptr) {
            statement.bindTextOrNull(index++, record.copyValue(property));
        }
    }
    if (person) statement.bindInt(index++, now_);
    statement.bindInt(index, record.recordID_);
    return statement.run(error);
}

bool AddressBookWriter::writeMultiValue(const ABRecord& person, ABPropertyID property, std::string* error) {
    if (!run("DELETE FROM ABMultiValue WHERE record_id = ? AND property = ?", {person.recordID_, property}, error)) {
        return false;
    }
    auto statement = database_.prepare(
        "INSERT INTO ABMultiValue (record_id, property, identifier, label, value) VALUES (?, ?, ?, ?, ?)");
    std::int64_t identifier = 0;
    for (const ABMultiValueEntry& entry : person.copyMultiValue(property)) {
        statement.reset();
        statement.bindInt(1, person.recordID_).bindInt(2, property).bindInt(3, identifier++);
        if (entry.label.empty()) {
            statement.bindNull(4);
        } else if (const auto label = labelRow(entry.label, error)) {
            statement.bindInt(4, *label);
        } else {
            return false;
        }
        if (!statement.bindText(5, entry.value).run(error)) return false;
    }
    return true;
}

std::optional<std::int64_t> AddressBookWriter::labelRow(const std::string& label, std::string* error) {
    auto insert = database_.prepare("INSERT OR IGNORE INTO ABMultiValueLabel (value) VALUES (?)");
    if (!insert.bindText(1, label).run(error)) return std::nullopt;
    auto select = database_.prepare("SELECT ROWID FROM ABMultiValueLabel WHERE value = ?");
    select.bindText(1, label);
    if (select.step() == SqliteDatabase::Statement::Step::Row) return select.columnInt(0);
    if (error != nullptr) *error = select.errorMessage();
    return std::nullopt;
}

bool AddressBookWriter::writeImage(const ABRecord& person, std::string* error) {
    // The device derives thumbnails from the full-size picture; old ones would show the old one.
    if (!run("DELETE FROM images.ABThumbnailImage WHERE record_id = ?", {person.recordID_}, error)) return false;
    if (!person.image_) return run("DELETE FROM images.ABFullSizeImage WHERE record_id = ?", {person.recordID_}, error);
    auto statement = database_.prepare("INSERT OR REPLACE INTO images.ABFullSizeImage (record_id, data) VALUES (?, ?)");
    return statement.bindInt(1, person.recordID_).bindBlob(2, *person.image_).run(error);
}

bool AddressBookWriter::remove(const ABRecord& record, std::string* error) {
    const std::int64_t row = record.recordID_;
    if (record.type_ == ABRecordType::Group) {
        return run("DELETE FROM ABGroup WHERE ROWID = ?", {row}, error) &&
               run("DELETE FROM ABGroupMembers WHERE group_id = ?1 OR (member_type = ?2 AND member_id = ?1)",
                   {row, AddressBookSchema::kGroupMemberType}, error);
    }
    return run("DELETE FROM ABPerson WHERE ROWID = ?", {row}, error) &&
           run("DELETE FROM ABMultiValue WHERE record_id = ?", {row}, error) &&
           run("DELETE FROM ABGroupMembers WHERE member_type = ? AND member_id = ?",
               {AddressBookSchema::kPersonMemberType, row}, error) &&
           run("DELETE FROM images.ABFullSizeImage WHERE record_id = ?", {row}, error) &&
           run("DELETE FROM images.ABThumbnailImage WHERE record_id = ?", {row}, error);
}

bool AddressBookWriter::insertMember(const ABRecord& group, const ABRecord& person, std::string* error) {
    // A person who is a member already stays one.
    return run("INSERT OR IGNORE INTO ABGroupMembers (group_id, member_type, member_id) VALUES (?, ?, ?)",
               {group.recordID_, AddressBookSchema::kPersonMemberType, person.recordID_}, error);
}

bool AddressBookWriter::run(const char* sql, std::initializer_list<std::int64_t> values, std::string* error) {
    auto statement = database_.prepare(sql);
    int index = 1;
    for (std::int64_t value : values) statement.bindInt(index++, value);
    return statement.run(error);
}

}  // namespace stowhaven
