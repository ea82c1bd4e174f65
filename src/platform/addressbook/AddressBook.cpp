#include "platform/addressbook/AddressBook.h"

#include "platform/DeviceRoot.h"
#include "platform/Failure.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/SqliteDatabase.h"
#include "platform/addressbook/ABNameQuery.h"
#include "platform/addressbook/AddressBookRows.h"
#include "platform/addressbook/AddressBookSchema.h"
#include "platform/addressbook/AddressBookWriter.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace stowhaven {

namespace {

using namespace std::chrono_literals;

// The folder may be a link to a folder not made yet: that one is made.
bool makeFolder(const std::filesystem::path& folder, std::string* error) {
    std::error_code code;
    std::filesystem::path target = folder;
    if (std::filesystem::is_symlink(std::filesystem::symlink_status(folder, code))) {
        target = folder.parent_path() / std::filesystem::read_symlink(folder, code);
        if (code) return fail(error, code.message());
    }
    std::filesystem::create_directories(target, code);
    return !code || fail(error, code.message());
}

std::unique_ptr<SqliteDatabase> openFiles(const std::string& folder, std::string* error) {
    if (!makeFolder(folder, error)) return nullptr;
    auto database =
        SqliteDatabase::open(folder + "/AddressBook.sqlitedb", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, error);
    if (database == nullptr) return nullptr;
    database->setBusyTimeout(2s);
    auto attach = database->prepare("ATTACH DATABASE ? AS images");
    attach.bindText(1, folder + "/AddressBookImages.sqlitedb");
    if (!attach.run(error) || !AddressBookSchema::createMissingTables(*database, error)) return nullptr;
    return database;
}

// The dates of the book's rows: whole seconds since the reference date.
std::int64_t secondsNow() {
    return static_cast<std::int64_t>(std::floor(Platform::current().clock().date().timeIntervalSinceReferenceDate()));
}

}  // namespace

AddressBook::AddressBook(std::unique_ptr<SqliteDatabase> database) : database_(std::move(database)) {}

AddressBook::~AddressBook() = default;

std::shared_ptr<AddressBook> AddressBook::open(const std::string& folder, std::string* error) {
    std::string reason;
    auto database = openFiles(folder, &reason);
    if (database == nullptr) {
        fail(error, "can't open the address book in " + folder + ": " + reason);
        return nullptr;
    }
    return std::shared_ptr<AddressBook>(new AddressBook(std::move(database)));
}

std::shared_ptr<AddressBook> AddressBook::createWithOptions(std::string* error) {
    return open(DeviceRoot::var() + "/root/Library/AddressBook", error);
}

std::vector<std::shared_ptr<ABRecord>> AddressBook::copyPeopleWithName(const std::string& name) {
    std::lock_guard lock(mutex_);
    const ABNameQuery query(name);
    std::vector<std::shared_ptr<ABRecord>> people = allRecords(ABRecordType::Person);
    std::erase_if(people, [&](const std::shared_ptr<ABRecord>& person) { return !query.matches(*person); });
    return people;
}

std::vector<std::shared_ptr<ABRecord>> AddressBook::copyArrayOfAllGroups() { return allRecords(ABRecordType::Group); }

std::vector<std::shared_ptr<ABRecord>> AddressBook::allRecords(ABRecordType type) {
    std::lock_guard lock(mutex_);
    std::string error;
    const auto rows = AddressBookRows(*database_).rowIDs(type, &error);
    if (!rows) SH_LOG("can't read the address book: {}", error);
    std::vector<std::shared_ptr<ABRecord>> records;
    for (int row : rows.value_or(std::vector<int>())) {
        auto record = recordOfRow(type, row);
        if (record != nullptr && !isRemoved(record)) records.push_back(std::move(record));
    }
    for (const auto& record : added_) {
        if (record->type() == type) records.push_back(record);
    }
    return records;
}

std::shared_ptr<ABRecord> AddressBook::recordOfRow(ABRecordType type, int rowID) {
    auto& cached = loaded_[{type, rowID}];
    if (cached != nullptr) return cached;
    std::string error;
    cached = AddressBookRows(*database_).load(type, rowID, &error);
    if (cached == nullptr) {
        SH_LOG("can't read row {} of the address book: {}", rowID, error);
        loaded_.erase({type, rowID});
        return nullptr;
    }
    return cached;
}

bool AddressBook::holds(const std::shared_ptr<ABRecord>& record) const {
    if (std::find(added_.begin(), added_.end(), record) != added_.end()) return true;
    const auto found = loaded_.find({record->type(), record->recordID()});
    return found != loaded_.end() && found->second == record;
}

bool AddressBook::isRemoved(const std::shared_ptr<ABRecord>& record) const {
    return std::find(removed_.begin(), removed_.end(), record) != removed_.end();
}

bool AddressBook::addRecord(const std::shared_ptr<ABRecord>& record, std::string* error) {
    if (record == nullptr) return fail(error, "no record to add");
    std::lock_guard lock(mutex_);
    if (record->inBook_) return fail(error, "the record is in an address book already");
    record->inBook_ = true;
    added_.push_back(record);
    return true;
}

bool AddressBook::removeRecord(const std::shared_ptr<ABRecord>& record, std::string* error) {
    if (record == nullptr) return fail(error, "no record to remove");
    std::lock_guard lock(mutex_);
    if (!holds(record)) return fail(error, "the record isn't in this address book");
    if (const auto added = std::find(added_.begin(), added_.end(), record); added != added_.end()) {
        added_.erase(added);
        record->inBook_ = false;
    } else if (!isRemoved(record)) {
        removed_.push_back(record);
    }
    return true;
}

bool AddressBook::hasUnsavedChanges() const {
    std::lock_guard lock(mutex_);
    return !added_.empty() || !removed_.empty() ||
           std::any_of(loaded_.begin(), loaded_.end(), [](const auto& entry) { return entry.second->hasChanges(); });
}

bool AddressBook::save(std::string* error) {
    std::lock_guard lock(mutex_);
    if (!hasUnsavedChanges()) return true;
    std::vector<ABRecord*> inserted;
    std::string reason;
    if (!writeChanges(inserted, &reason)) {
        for (ABRecord* record : inserted) record->recordID_ = ABRecord::kABRecordInvalidID;
        SH_LOG("can't save the address book: {}", reason);
        return fail(error, reason);
    }
    settleSavedChanges();
    return true;
}

bool AddressBook::writeChanges(std::vector<ABRecord*>& inserted, std::string* error) {
    SqliteDatabase::Transaction transaction(*database_);
    if (!transaction.begin(error)) return false;
    AddressBookWriter writer(*database_, secondsNow());
    for (const auto& record : removed_) {
        if (!writer.remove(*record, error)) return false;
    }
    for (const auto& record : added_) {
        inserted.push_back(record.get());
        if (!writer.insert(*record, error)) return false;
    }
    for (const auto& [key, record] : loaded_) {
        if (record->hasChanges() && !isRemoved(record) && !writer.update(*record, error)) return false;
    }
    return writeNewMembers(writer, error) && transaction.commit(error);
}

bool AddressBook::writeNewMembers(AddressBookWriter& writer, std::string* error) {
    std::vector<std::shared_ptr<ABRecord>> groups = added_;
    for (const auto& [key, record] : loaded_) {
        if (!isRemoved(record)) groups.push_back(record);
    }
    for (const auto& group : groups) {
        for (const auto& person : group->newMembers_) {
            if (isRemoved(person)) continue;
            if (!holds(person)) return fail(error, "a new member of a group isn't in this address book");
            if (!writer.insertMember(*group, *person, error)) return false;
        }
    }
    return true;
}

void AddressBook::settleSavedChanges() {
    for (const auto& record : removed_) {
        loaded_.erase({record->type(), record->recordID()});
        record->recordID_ = ABRecord::kABRecordInvalidID;
        record->inBook_ = false;
        record->forgetChanges();
    }
    for (const auto& record : added_) loaded_[{record->type(), record->recordID()}] = record;
    for (const auto& [key, record] : loaded_) record->forgetChanges();
    added_.clear();
    removed_.clear();
}

}  // namespace stowhaven
