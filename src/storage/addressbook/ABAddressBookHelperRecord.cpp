// The current record: finding it, making it, changing its properties, and saving.

#include "core/AddressBookNote.h"
#include "core/AppIcon.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "storage/addressbook/ABAddressBookHelper.h"

namespace stowhaven {

namespace {

void notifyProgress(const std::string& message) { Supervisor::shared().notifyProgress(std::nullopt, message); }

}  // namespace

bool ABAddressBookHelper::sameName(const std::optional<std::string>& name, std::string_view other) {
    return name && textutil::caseInsensitiveOrder(*name, other) == 0;
}

bool ABAddressBookHelper::isOwnRecord(const ABRecord& person) {
    return sameName(person.copyValue(kABPersonLastNameProperty), kLastName);
}

ABAddressBookHelper::Records ABAddressBookHelper::peopleWithName(const std::string& name) {
    return addressBookRef_ ? addressBookRef_->copyPeopleWithName(name) : Records{};
}

ABAddressBookHelper::Records ABAddressBookHelper::allGroups() {
    return addressBookRef_ ? addressBookRef_->copyArrayOfAllGroups() : Records{};
}

bool ABAddressBookHelper::existsABRecordWithFirstName(const std::string& firstName, const std::string& lastName) {
    std::lock_guard lock(mutex_);
    const Records people = peopleWithName(lastName);
    if (people.empty()) {
        SH_LOG("No entry with name <{},{}>", firstName, lastName);
        return false;
    }
    abRecord_.reset();
    for (const auto& person : people) {
        if (!sameName(person->copyValue(kABPersonFirstNameProperty), firstName)) continue;
        abRecord_ = person;
        SH_LOG("\tFound <{},{}>...", firstName, lastName);
        break;
    }
    return abRecord_ != nullptr;
}

std::optional<std::string> ABAddressBookHelper::getCurrentABRecordNote() const {
    std::lock_guard lock(mutex_);
    return abRecord_ ? abRecord_->copyValue(kABPersonNoteProperty) : std::nullopt;
}

std::optional<std::string> ABAddressBookHelper::getCurrentABRecordOrganization() const {
    std::lock_guard lock(mutex_);
    return abRecord_ ? abRecord_->copyValue(kABPersonOrganizationProperty) : std::nullopt;
}

bool ABAddressBookHelper::createABRecord() {
    std::lock_guard lock(mutex_);
    abRecord_ = ABRecord::createPerson();
    notifyProgress("Adding new Stowhaven record");
    std::string error;
    const bool added = addressBookRef_ && addressBookRef_->addRecord(abRecord_, &error);
    if (!added) SH_LOG("Couldn't add the record. Error: {}", error);
    notifyProgress("Saving new Stowhaven record");
    const bool saved = saveABRecordChange();
    updateABRecordImage();
    return added && saved;
}

bool ABAddressBookHelper::createABGroupWithName(const std::string& name) {
    std::lock_guard lock(mutex_);
    SH_LOG("Group <{}> is always <{}>", name, kGroupName);
    notifyProgress("Searching for Backup group");
    std::shared_ptr<ABRecord> group;
    for (const auto& candidate : allGroups()) {
        if (!sameName(candidate->copyValue(kABGroupNameProperty), kGroupName)) continue;
        notifyProgress("Found Backup group");
        group = candidate;
        break;
    }
    std::string error;
    if (!group) {
        notifyProgress("Creating Backup group");
        group = ABRecord::createGroup();
        group->setValue(kABGroupNameProperty, kGroupName, &error);
        if (!addressBookRef_ || !addressBookRef_->addRecord(group, &error)) SH_LOG("Error: {}", error);
    }
    const bool added = abRecord_ && group->addMember(abRecord_, &error);
    if (added) {
        SH_LOG("Group member added!");
    } else {
        SH_LOG("Error adding group member!");
    }
    return added;
}

bool ABAddressBookHelper::updateABRecordProperty(ABPropertyID property, const std::optional<std::string>& value) {
    std::lock_guard lock(mutex_);
    if (!value || value->empty()) return true;
    std::string error = "no current record";
    bool success = false;
    if (abRecord_) {
        error.clear();
        success = property == kABPersonURLProperty
                      ? abRecord_->setMultiValue(property, {{kABPersonHomePageLabel, *value}}, &error)
                      : abRecord_->setValue(property, *value, &error);
    }
    if (!error.empty()) SH_LOG("Error: {}", error);
    SH_LOG("propertyId: {}\tfSuccess: {:d}", property, success);
    return success;
}

bool ABAddressBookHelper::updateABRecordFirstName(const std::optional<std::string>& value) {
    return updateABRecordProperty(kABPersonFirstNameProperty, value);
}

bool ABAddressBookHelper::updateABRecordLastName(const std::optional<std::string>& value) {
    return updateABRecordProperty(kABPersonLastNameProperty, value);
}

bool ABAddressBookHelper::updateABRecordNickName(const std::optional<std::string>& value) {
    return updateABRecordProperty(kABPersonNicknameProperty, value);
}

bool ABAddressBookHelper::updateABRecordOrganizationName(const std::optional<std::string>& value) {
    return updateABRecordProperty(kABPersonOrganizationProperty, value);
}

bool ABAddressBookHelper::updateABRecordHomepageURLString(const std::optional<std::string>& value) {
    return updateABRecordProperty(kABPersonURLProperty, value);
}

bool ABAddressBookHelper::updateABRecordNoteData(const std::optional<std::string>& note) {
    SH_LOG("Backup data size: {}", note ? note->size() : 0);
    return updateABRecordProperty(kABPersonNoteProperty, note);
}

bool ABAddressBookHelper::updateABRecordImage() {
    std::lock_guard lock(mutex_);
    notifyProgress(Strings::localized("SETTING_ADDRESSBOOK_IMAGE"));
    std::string error;
    const bool set = abRecord_ && abRecord_->setImageData(appIconPNGData(), &error);
    if (!set) SH_LOG("Couldn't set the image. Error: {}", error);
    return set;
}

bool ABAddressBookHelper::saveABRecordChange() {
    std::lock_guard lock(mutex_);
    if (!addressBookRef_ || !addressBookRef_->hasUnsavedChanges()) return false;
    notifyProgress(Strings::localized("SAVING_ADDRESSBOOK_CHANGES"));
    std::string error;
    const bool saved = addressBookRef_->save(&error);
    if (!saved) SH_LOG("Couldn't save the address book. Error: {}", error);
    return saved;
}

void ABAddressBookHelper::upgradeStowhavenABEntry() {
    upgradeStowhavenABEntryStep3WithIconData(appIconPNGData());
    loadAvailableDeviceBackups();
}

// "Haven <UDID>" was the first name before the underscore took the blank's place.
void ABAddressBookHelper::upgradeStowhavenABEntryStep3WithIconData(const std::string& iconData) {
    std::lock_guard lock(mutex_);
    bool upgraded = false;
    for (const auto& person : peopleWithName(kLastName)) {
        if (!isOwnRecord(*person)) continue;
        const auto firstName = person->copyValue(kABPersonFirstNameProperty);
        const auto parts = textutil::split(firstName.value_or(""), ' ');
        if (parts.size() != 2) continue;
        SH_LOG("Upgrading <{}>...", *firstName);
        person->setValue(kABPersonFirstNameProperty, parts[0] + "_" + parts[1]);
        person->removeImageData();
        person->setImageData(iconData);
        upgraded = true;
    }
    if (upgraded) saveABRecordChange();
}

bool ABAddressBookHelper::createDeviceRecord(const std::string& firstName, const std::string& deviceName) {
    bool ok = createABRecord();
    SH_LOG("\tABRecord: {:d}", ok);
    const auto step = [&ok](const char* what, bool result) {
        SH_LOG("\t{}: {:d}", what, result);
        ok = ok && result;
    };
    step("ABGroup", createABGroupWithName(kGroupName));
    step("ABRecordFirstName", updateABRecordFirstName(firstName));
    step("ABRecordLastName", updateABRecordLastName(kLastName));
    step("ABRecordNickName", updateABRecordNickName(deviceName));
    step("ABRecordOrganizationName", updateABRecordOrganizationName(kOrganization));
    step("ABRecordHomepageURL", updateABRecordHomepageURLString(AddressBookNote::kUserGuideURL));
    return ok;
}

}  // namespace stowhaven
