#pragma once

#include "platform/addressbook/ABRecord.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

class AddressBookWriter;
class SqliteDatabase;

// The contacts of the device, kept where the device keeps them: AddressBook.sqlitedb
// (people, their several-valued properties and their labels, groups and group members) and
// AddressBookImages.sqlitedb (pictures) in the AddressBook folder of the home of the
// process. Changes are made on records and written by save() alone, in one transaction
// over both files: nothing is written before, and a save that fails leaves both files as
// they were and the changes still pending. Rows and tables the book doesn't know stay
// as they are.
class AddressBook {
public:
    // Opens the book of the folder, making the files and their tables where they are
    // missing; nothing, with the reason in error, when that can't be done.
    static std::shared_ptr<AddressBook> open(const std::string& folder, std::string* error = nullptr);
    // The book of the process: the AddressBook folder in the Library of its home, which is
    // root's on the device: <var>/root/Library/AddressBook.
    static std::shared_ptr<AddressBook> createWithOptions(std::string* error = nullptr);

    ~AddressBook();
    AddressBook(const AddressBook&) = delete;
    AddressBook& operator=(const AddressBook&) = delete;

    // The people with a name field (first, middle, last, nickname, organisation) of which
    // every word of the name begins a word, ignoring case, as the device's lookup does.
    // Saved people in the order of their rows, then those added since, without those
    // removed since.
    std::vector<std::shared_ptr<ABRecord>> copyPeopleWithName(const std::string& name);
    std::vector<std::shared_ptr<ABRecord>> copyArrayOfAllGroups();

    bool addRecord(const std::shared_ptr<ABRecord>& record, std::string* error = nullptr);
    bool removeRecord(const std::shared_ptr<ABRecord>& record, std::string* error = nullptr);
    bool hasUnsavedChanges() const;
    bool save(std::string* error = nullptr);

private:
    explicit AddressBook(std::unique_ptr<SqliteDatabase> database);

    // Saved records in the order of their rows, then those added since, without those
    // removed since.
    std::vector<std::shared_ptr<ABRecord>> allRecords(ABRecordType type);
    std::shared_ptr<ABRecord> recordOfRow(ABRecordType type, int rowID);
    bool holds(const std::shared_ptr<ABRecord>& record) const;
    bool isRemoved(const std::shared_ptr<ABRecord>& record) const;
    // Writes every pending change in one transaction; inserted gets each record that was
    // given a row, to take back when the transaction doesn't go through.
    bool writeChanges(std::vector<ABRecord*>& inserted, std::string* error);
    bool writeNewMembers(AddressBookWriter& writer, std::string* error);
    // After a save: the records take their new state and have no pending changes.
    void settleSavedChanges();

    mutable std::recursive_mutex mutex_;
    std::unique_ptr<SqliteDatabase> database_;
    // The book's one object per saved row, by type and row.
    std::map<std::pair<ABRecordType, int>, std::shared_ptr<ABRecord>> loaded_;
    std::vector<std::shared_ptr<ABRecord>> added_;
    std::vector<std::shared_ptr<ABRecord>> removed_;
};

}  // namespace stowhaven
