#pragma once

#include "platform/addressbook/ABRecord.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

namespace stowhaven {

class SqliteDatabase;

// Writes records into the rows where the device keeps them, inside the transaction of a
// save. Each call answers false, with the reason in error, when a statement fails.
class AddressBookWriter {
public:
    // now: the dates of the save, in whole seconds since the reference date.
    AddressBookWriter(SqliteDatabase& database, std::int64_t now) : database_(database), now_(now) {}

    // A new row with every value and the picture; the record takes the row's number.
    bool insert(ABRecord& record, std::string* error);
    // The pending changes of a saved record.
    bool update(const ABRecord& record, std::string* error);
    // The row with its several values, memberships and pictures.
    bool remove(const ABRecord& record, std::string* error);
    // The person must have its row.
    bool insertMember(const ABRecord& group, const ABRecord& person, std::string* error);

private:
    bool updateColumns(const ABRecord& record, std::string* error);
    bool writeMultiValue(const ABRecord& person, ABPropertyID property, std::string* error);
    std::optional<std::int64_t> labelRow(const std::string& label, std::string* error);
    bool writeImage(const ABRecord& person, std::string* error);
    bool run(const char* sql, std::initializer_list<std::int64_t> values, std::string* error);

    SqliteDatabase& database_;
    std::int64_t now_;
};

}  // namespace stowhaven
