#include "platform/addressbook/ABRecord.h"

#include "platform/Failure.h"
#include "platform/addressbook/AddressBookSchema.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

namespace {

const char* nameOf(ABRecordType type) { return type == ABRecordType::Person ? "person" : "group"; }

}  // namespace

std::shared_ptr<ABRecord> ABRecord::createPerson() {
    return std::shared_ptr<ABRecord>(new ABRecord(ABRecordType::Person));
}

std::shared_ptr<ABRecord> ABRecord::createGroup() {
    return std::shared_ptr<ABRecord>(new ABRecord(ABRecordType::Group));
}

const ABRecord::Value* ABRecord::find(ABPropertyID property) const {
    for (const Value& value : values_) {
        if (value.property == property) return &value;
    }
    return nullptr;
}

ABRecord::Value& ABRecord::valueFor(ABPropertyID property) {
    for (Value& value : values_) {
        if (value.property == property) return value;
    }
    return values_.emplace_back(Value{property, std::nullopt, {}});
}

std::optional<std::string> ABRecord::copyValue(ABPropertyID property) const {
    const Value* value = find(property);
    return value != nullptr ? value->single : std::nullopt;
}

bool ABRecord::setValue(ABPropertyID property, const std::string& value, std::string* error) {
    if (AddressBookSchema::columnOf(type_, property) == nullptr) {
        return fail(error, fmt::format("a {} has no property {} of one value", nameOf(type_), property));
    }
    valueFor(property).single = value;
    changed_.insert(property);
    return true;
}

ABMultiValue ABRecord::copyMultiValue(ABPropertyID property) const {
    const Value* value = find(property);
    return value != nullptr ? value->multiple : ABMultiValue();
}

bool ABRecord::setMultiValue(ABPropertyID property, const ABMultiValue& value, std::string* error) {
    if (!AddressBookSchema::isMultiValue(type_, property)) {
        return fail(error, fmt::format("a {} has no property {} of several values", nameOf(type_), property));
    }
    valueFor(property).multiple = value;
    changed_.insert(property);
    return true;
}

bool ABRecord::setImageData(const std::string& data, std::string* error) {
    if (type_ != ABRecordType::Person) return fail(error, "only a person has a picture");
    image_ = data;
    imageChanged_ = true;
    return true;
}

bool ABRecord::removeImageData(std::string* error) {
    if (type_ != ABRecordType::Person) return fail(error, "only a person has a picture");
    image_.reset();
    imageChanged_ = true;
    return true;
}

bool ABRecord::addMember(const std::shared_ptr<ABRecord>& person, std::string* error) {
    if (type_ != ABRecordType::Group) return fail(error, "only a group takes members");
    if (person == nullptr || person->type_ != ABRecordType::Person) return fail(error, "a member must be a person");
    if (std::find(newMembers_.begin(), newMembers_.end(), person) == newMembers_.end()) newMembers_.push_back(person);
    return true;
}

void ABRecord::forgetChanges() {
    changed_.clear();
    imageChanged_ = false;
    newMembers_.clear();
}

}  // namespace stowhaven
