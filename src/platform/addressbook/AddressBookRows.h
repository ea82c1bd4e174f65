#pragma once

#include "platform/addressbook/ABRecord.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

class SqliteDatabase;

// Reads records from the rows where the device keeps them.
class AddressBookRows {
public:
    explicit AddressBookRows(SqliteDatabase& database) : database_(database) {}

    // The rows of ABPerson or ABGroup, in order; nothing when they can't be read.
    std::optional<std::vector<int>> rowIDs(ABRecordType type, std::string* error = nullptr);
    // The record of a row with its values and picture, held by a book; nothing when the
    // row is gone or can't be read.
    std::shared_ptr<ABRecord> load(ABRecordType type, int rowID, std::string* error = nullptr);

private:
    bool loadPersonColumns(ABRecord& person, std::string* error);
    bool loadMultiValue(ABRecord& person, ABPropertyID property, std::string* error);
    bool loadImage(ABRecord& person, std::string* error);

    SqliteDatabase& database_;
};

}  // namespace stowhaven
