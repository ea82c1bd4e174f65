// The records of all devices: their list, their notes, and their renaming and deletion.

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "storage/addressbook/ABAddressBookHelper.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

namespace {

std::string nameOf(const ABRecord& person, ABPropertyID property) {
    return textutil::orNull(person.copyValue(property));
}

}  // namespace

std::vector<std::string> ABAddressBookHelper::availableDeviceBackups() const {
    std::lock_guard lock(mutex_);
    return availableDeviceBackups_;
}

// The lookup matches other name fields too: a person of the program's last name is listed
// by its first name, and of the others the first of each first name.
void ABAddressBookHelper::loadAvailableDeviceBackups() {
    std::lock_guard lock(mutex_);
    const Records people = peopleWithName(kLastName);
    if (people.empty()) {
        SH_LOG("No entry with last name <{}>", kLastName);
        return;
    }
    std::vector<std::string> names;
    for (const auto& person : people) {
        const auto firstName = person->copyValue(kABPersonFirstNameProperty);
        if (!firstName) continue;
        if (isOwnRecord(*person) || std::find(names.begin(), names.end(), *firstName) == names.end()) {
            names.push_back(*firstName);
        }
    }
    availableDeviceBackups_ = std::move(names);
}

std::optional<std::string> ABAddressBookHelper::getNoteForABRecordWithFirstName(const std::string& firstName) {
    std::lock_guard lock(mutex_);
    for (const auto& person : peopleWithName(kLastName)) {
        if (isOwnRecord(*person) && sameName(person->copyValue(kABPersonFirstNameProperty), firstName)) {
            return person->copyValue(kABPersonNoteProperty);
        }
    }
    SH_LOG("No entry with name <{},{}>", firstName, kLastName);
    return std::nullopt;
}

std::optional<std::string> ABAddressBookHelper::getNoteFromDeviceBackupAtIndex(const std::string& firstName) {
    std::lock_guard lock(mutex_);
    const Records people = peopleWithName(kLastName);
    const auto first = std::find_if(people.begin(), people.end(), [](const auto& person) {
        return person->copyValue(kABPersonFirstNameProperty) && isOwnRecord(*person);
    });
    auto note = first == people.end() ? std::nullopt : (*first)->copyValue(kABPersonNoteProperty);
    if (!note) SH_LOG("Can't find entry at index: {}", firstName);
    return note;
}

void ABAddressBookHelper::deleteEntryWithFirstName(const std::string& firstName) {
    std::lock_guard lock(mutex_);
    const Records people = peopleWithName(firstName);
    if (people.empty()) {
        SH_LOG("No entry with first name <{}>", firstName);
        return;
    }
    for (const auto& person : people) {
        const std::string first = nameOf(*person, kABPersonFirstNameProperty);
        const std::string last = nameOf(*person, kABPersonLastNameProperty);
        // The lookup finds the owner's contacts too, by other fields or by that first name.
        if (!isOwnRecord(*person) || !sameName(person->copyValue(kABPersonFirstNameProperty), firstName)) {
            SH_LOG("\tSkipping <{},{}>...", first, last);
            continue;
        }
        SH_LOG("Deleting <{},{}>...", first, last);
        std::string error;
        if (addressBookRef_->removeRecord(person, &error)) {
            SH_LOG("\tDeleted <{},{}>...", first, last);
        } else {
            SH_LOG("\tCouldn't deleted <{},{}>. Error: {}", first, last, error);
        }
    }
    std::erase(availableDeviceBackups_, firstName);
    saveABRecordChange();

    // The group goes too, also while other devices' records are in it.
    const Records groups = allGroups();
    if (groups.empty()) SH_LOG("No group with name <{}>", kGroupName);
    for (const auto& group : groups) {
        if (!sameName(group->copyValue(kABGroupNameProperty), kGroupName)) continue;
        std::string error;
        if (addressBookRef_->removeRecord(group, &error)) {
            saveABRecordChange();
            SH_LOG("\tDeleted group <{}>...", kGroupName);
            break;
        }
        SH_LOG("\tCouldn't delete group <{}>. Error: {}", kGroupName, error);
    }
    loadAvailableDeviceBackups();
}

// Only records of the program's last name go: the lookup finds others by other fields.
void ABAddressBookHelper::deleteAllStowhavenABEntries() {
    std::lock_guard lock(mutex_);
    Supervisor& supervisor = Supervisor::shared();
    supervisor.showProgressViewWithMessage(Strings::localized("DELETE_ADDRESSBOOK_ENTRIES"));
    const Records people = peopleWithName(kLastName);
    if (people.empty()) {
        SH_LOG("No entry with last name <{}>", kLastName);
        supervisor.notifyProgress(1.0, std::nullopt);
        return;
    }
    const auto report = [&supervisor](std::size_t index, std::size_t count, const std::string& name) {
        supervisor.notifyProgress(static_cast<double>(index + 1) / static_cast<double>(count),
                                  fmt::format("{} {}...", "Deleting", name));
    };
    for (std::size_t index = 0; index < people.size(); ++index) {
        const std::string first = nameOf(*people[index], kABPersonFirstNameProperty);
        if (!isOwnRecord(*people[index]) || !(first.starts_with("HAVEN") || first.starts_with("Haven"))) continue;
        std::string error;
        if (addressBookRef_->removeRecord(people[index], &error)) {
            SH_LOG("\tDeleted <{},Backup>...", first);
        } else {
            SH_LOG("\tCouldn't deleted <{},Backup>. Error: {}", first, error);
        }
        report(index, people.size(), first);
    }
    const Records groups = allGroups();
    for (std::size_t index = 0; index < groups.size(); ++index) {
        if (!sameName(groups[index]->copyValue(kABGroupNameProperty), kGroupName)) continue;
        std::string error;
        if (!addressBookRef_->removeRecord(groups[index], &error)) SH_LOG("Error: {}", error);
        report(index, groups.size(), kGroupName);
    }
    supervisor.notifyProgress(1.0, std::nullopt);
    saveABRecordChange();
    loadAvailableDeviceBackups();
}

void ABAddressBookHelper::renameEntryWithFirstName(const std::string& oldFirstName, const std::string& newFirstName) {
    std::lock_guard lock(mutex_);
    const Records people = peopleWithName(oldFirstName);
    if (people.empty()) {
        SH_LOG("No entry with first name <{}>", oldFirstName);
        return;
    }
    // The current record, none before a lookup, is current again afterwards.
    const auto kept = abRecord_;
    for (const auto& person : people) {
        if (!isOwnRecord(*person) || !sameName(person->copyValue(kABPersonFirstNameProperty), oldFirstName)) {
            SH_LOG("\tSkipping <{}>...", nameOf(*person, kABPersonFirstNameProperty));
            continue;
        }
        abRecord_ = person;
        updateABRecordFirstName(newFirstName);
    }
    saveABRecordChange();
    abRecord_ = kept;
    loadAvailableDeviceBackups();
}

}  // namespace stowhaven
