#pragma once

#include "platform/addressbook/ABRecord.h"

#include <array>
#include <string>

namespace stowhaven {

class SqliteDatabase;

// The tables of the address book as the device defines them, and where each property of
// a record is kept.
class AddressBookSchema {
public:
    struct Column {
        ABPropertyID property;
        const char* name;
    };
    // The columns of ABPerson that hold a property of one value.
    static constexpr std::array<Column, 6> kPersonColumns{{{kABPersonFirstNameProperty, "First"},
                                                           {kABPersonLastNameProperty, "Last"},
                                                           {kABPersonMiddleNameProperty, "Middle"},
                                                           {kABPersonOrganizationProperty, "Organization"},
                                                           {kABPersonNoteProperty, "Note"},
                                                           {kABPersonNicknameProperty, "Nickname"}}};
    // member_type of ABGroupMembers.
    static constexpr int kPersonMemberType = 0;
    static constexpr int kGroupMemberType = 1;

    // Makes the tables that are missing, in the main file and in the one attached as
    // "images"; the tables that are there stay as they are.
    static bool createMissingTables(SqliteDatabase& database, std::string* error);

    // The column of ABPerson or ABGroup for a property of one value; nullptr for a
    // property that the type doesn't keep in a column.
    static const char* columnOf(ABRecordType type, ABPropertyID property);
    // Whether the type keeps the property as rows of ABMultiValue.
    static bool isMultiValue(ABRecordType type, ABPropertyID property);
};

}  // namespace stowhaven
