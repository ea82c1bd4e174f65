#pragma once

#include "platform/addressbook/AddressBook.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// The address book as storage: the whole history of a device, package lists only, in the
// note of one contact record per device ("Haven_<UDID>", "Stow"), every record a member of
// the group "Stowhaven Data". It holds no files, so it is no engine of the storage contract;
// the catalogue and the screens call it directly. Every change is to the current record,
// the one the last lookup or creation selected, and nothing is written before
// saveABRecordChange().
class ABAddressBookHelper : public std::enable_shared_from_this<ABAddressBookHelper> {
public:
    static constexpr const char* kLastName = "Stow";
    // A device's first name is this, "_" and the device's UDID; alone, it names the generic
    // record of the time before records were made per device.
    static constexpr const char* kGenericFirstName = "Haven";
    static constexpr const char* kGroupName = "Stowhaven Data";
    static constexpr const char* kOrganization = "Larkmoor, Inc.";

    static std::string firstNameOfDevice(const std::string& deviceUID);

    // Links root's address book to the mobile user's, makes the helper and opens the book.
    static std::shared_ptr<ABAddressBookHelper> createABAddressBookHelper();
    // The helper made last; empty until then.
    static std::shared_ptr<ABAddressBookHelper> shared();
    // The helper with its book opened anew (made when there is none yet), as the owner may
    // have changed the contacts' access since.
    static std::shared_ptr<ABAddressBookHelper> reopened();
    // Forgets the helper, so that the next use makes a fresh one. For tests only.
    static void destroyShared();
    // The program runs as root, whose home is not the mobile user's: the book the owner sees
    // is reached by a link from root's Library.
    static void createSymlink();
    static void removeSymlink();

    // Opens the book as the owner allows; without access, storage falls to local.
    void reset();
    bool isValid() const;

    // The first names of the records, one per device.
    std::vector<std::string> availableDeviceBackups() const;
    void loadAvailableDeviceBackups();

    // Selects the record of that first name (ignoring case) among those of the last name.
    bool existsABRecordWithFirstName(const std::string& firstName, const std::string& lastName);
    std::optional<std::string> getCurrentABRecordNote() const;
    std::optional<std::string> getCurrentABRecordOrganization() const;
    std::optional<std::string> getNoteForABRecordWithFirstName(const std::string& firstName);
    // The note of the first record of the program's last name that has a first name,
    // whatever the name given.
    std::optional<std::string> getNoteFromDeviceBackupAtIndex(const std::string& firstName);

    // A new record, saved at once, which becomes the current one.
    bool createABRecord();
    // Makes the current record a member of the program's group, made if missing.
    bool createABGroupWithName(const std::string& name);
    // Each sets one property of the current record; a missing or empty value is a success
    // that changes nothing.
    bool updateABRecordFirstName(const std::optional<std::string>& value);
    bool updateABRecordLastName(const std::optional<std::string>& value);
    bool updateABRecordNickName(const std::optional<std::string>& value);
    bool updateABRecordOrganizationName(const std::optional<std::string>& value);
    bool updateABRecordHomepageURLString(const std::optional<std::string>& value);
    bool updateABRecordNoteData(const std::optional<std::string>& note);
    bool updateABRecordImage();
    // False when there was nothing to save.
    bool saveABRecordChange();
    // A new current record of a device, with the program's group, names and link; false
    // when any step failed. Saved by saveABRecordChange().
    bool createDeviceRecord(const std::string& firstName, const std::string& deviceName);

    // Records of the older naming ("Haven <UDID>") take the current one and the icon.
    void upgradeStowhavenABEntry();

    void deleteEntryWithFirstName(const std::string& firstName);
    void deleteAllStowhavenABEntries();
    void renameEntryWithFirstName(const std::string& oldFirstName, const std::string& newFirstName);

    // The contacts on display are those of an Exchange account that syncs them, which
    // limits the length of a note.
    bool isActiveSyncEnabled() const;

private:
    using Records = std::vector<std::shared_ptr<ABRecord>>;

    // Names are the same ignoring case; a missing name is the same as none.
    static bool sameName(const std::optional<std::string>& name, std::string_view other);
    // Of the program's last name: the lookup by name finds others through other fields.
    static bool isOwnRecord(const ABRecord& person);

    bool updateABRecordProperty(ABPropertyID property, const std::optional<std::string>& value);
    void upgradeStowhavenABEntryStep3WithIconData(const std::string& iconData);
    // The people the book finds by that name; none without a book.
    Records peopleWithName(const std::string& name);
    Records allGroups();
    void openBook();

    mutable std::recursive_mutex mutex_;
    std::shared_ptr<ABRecord> abRecord_;
    std::shared_ptr<AddressBook> addressBookRef_;
    bool valid_ = false;
    std::vector<std::string> availableDeviceBackups_;
};

}  // namespace stowhaven
