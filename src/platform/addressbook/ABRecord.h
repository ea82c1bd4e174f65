#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace stowhaven {

// The property numbers of the device's address book, as its database keeps them.
using ABPropertyID = int;
inline constexpr ABPropertyID kABPersonFirstNameProperty = 0;
inline constexpr ABPropertyID kABPersonLastNameProperty = 1;
inline constexpr ABPropertyID kABPersonMiddleNameProperty = 6;
inline constexpr ABPropertyID kABPersonOrganizationProperty = 10;
inline constexpr ABPropertyID kABPersonNoteProperty = 14;
inline constexpr ABPropertyID kABPersonNicknameProperty = 19;
inline constexpr ABPropertyID kABPersonURLProperty = 22;
inline constexpr ABPropertyID kABGroupNameProperty = 0;

inline constexpr const char* kABPersonHomePageLabel = "_$!<HomePage>!$_";

// One value of a property that holds several, such as a person's links.
struct ABMultiValueEntry {
    std::string label;
    std::string value;
    bool operator==(const ABMultiValueEntry&) const = default;
};
using ABMultiValue = std::vector<ABMultiValueEntry>;

enum class ABRecordType { Person, Group };

// A person or a group of the address book. A record is made alone and joins a book by
// AddressBook::addRecord; a record read from a book is the book's one object for that row,
// so every lookup sees the changes not yet saved. Changes stay in the record until the
// book saves them.
class ABRecord {
public:
    static constexpr int kABRecordInvalidID = -1;

    static std::shared_ptr<ABRecord> createPerson();
    static std::shared_ptr<ABRecord> createGroup();

    ABRecordType type() const { return type_; }
    // The row of the record; kABRecordInvalidID until its first save.
    int recordID() const { return recordID_; }

    // A single-value property: a name, the organisation, the note, a group's name.
    // Nothing when it is not set.
    std::optional<std::string> copyValue(ABPropertyID property) const;
    // Answers false, with the reason in error, for a property that the record's type
    // doesn't have or that holds several values.
    bool setValue(ABPropertyID property, const std::string& value, std::string* error = nullptr);
    // A property of several values (a person's links); empty when none is set.
    ABMultiValue copyMultiValue(ABPropertyID property) const;
    bool setMultiValue(ABPropertyID property, const ABMultiValue& value, std::string* error = nullptr);

    // A person's picture.
    bool hasImageData() const { return image_.has_value(); }
    std::optional<std::string> copyImageData() const { return image_; }
    bool setImageData(const std::string& data, std::string* error = nullptr);
    bool removeImageData(std::string* error = nullptr);

    // A group takes a person as a member; saved with the book.
    bool addMember(const std::shared_ptr<ABRecord>& person, std::string* error = nullptr);

private:
    friend class AddressBook;
    friend class AddressBookRows;
    friend class AddressBookWriter;
    explicit ABRecord(ABRecordType type) : type_(type) {}

    struct Value {
        ABPropertyID property;
        std::optional<std::string> single;
        ABMultiValue multiple;
    };

    const Value* find(ABPropertyID property) const;
    Value& valueFor(ABPropertyID property);
    bool hasChanges() const { return !changed_.empty() || imageChanged_ || !newMembers_.empty(); }
    void forgetChanges();

    ABRecordType type_;
    int recordID_ = kABRecordInvalidID;
    // Whether a book holds the record, read from it or added to it.
    bool inBook_ = false;
    std::vector<Value> values_;
    std::optional<std::string> image_;
    std::set<ABPropertyID> changed_;
    bool imageChanged_ = false;
    std::vector<std::shared_ptr<ABRecord>> newMembers_;
};

}  // namespace stowhaven
