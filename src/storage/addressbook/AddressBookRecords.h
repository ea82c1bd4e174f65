#pragma once

#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

// What the catalogue asks of the address book, which keeps a device's whole history in the
// note of one contact record per device. Every change is to the current record, the one
// the last lookup or creation selected, and nothing is written before saveABRecordChange().
// The address-book engine is the implementation; shared() is empty until it is made.
class AddressBookRecords {
public:
    virtual ~AddressBookRecords() = default;

    static std::shared_ptr<AddressBookRecords> shared();
    static void setShared(std::shared_ptr<AddressBookRecords> records);

    // Gives records of the older naming ("Haven <UDID>") the current one.
    virtual void upgradeStowhavenABEntry() = 0;
    // Selects the record of that first name (ignoring case) among those of the last name.
    virtual bool existsABRecordWithFirstName(const std::string& firstName, const std::string& lastName) = 0;
    virtual std::optional<std::string> getCurrentABRecordNote() = 0;
    virtual std::optional<std::string> getCurrentABRecordOrganization() = 0;
    // The contacts on display are those of an Exchange account that syncs them, which
    // limits the length of a note.
    virtual bool isActiveSyncEnabled() = 0;

    // A new record, which becomes the current one.
    virtual bool createABRecord() = 0;
    // Makes the current record a member of the program's group.
    virtual bool createABGroupWithName(const std::string& name) = 0;
    virtual bool updateABRecordFirstName(const std::string& value) = 0;
    virtual bool updateABRecordLastName(const std::string& value) = 0;
    virtual bool updateABRecordNickName(const std::string& value) = 0;
    virtual bool updateABRecordOrganizationName(const std::string& value) = 0;
    virtual bool updateABRecordHomepageURLString(const std::string& value) = 0;
    virtual bool updateABRecordNoteData(const std::string& note) = 0;
    // False when there was nothing to save.
    virtual bool saveABRecordChange() = 0;
};

}  // namespace stowhaven
