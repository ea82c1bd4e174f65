#include "archive/KeyedUnarchiver.h"

#include "archive/KeyedArchiveFormat.h"
#include "platform/Log.h"
#include "platform/plist/PlistCodec.h"

#include <limits>

namespace stowhaven {

using namespace keyedarchive;

namespace {

const PlistValue* find(const PlistValue::Dictionary& keys, std::string_view key) {
    const auto found = keys.find(key);
    return found == keys.end() ? nullptr : &found->second;
}

std::nullopt_t refuse(std::string_view reason) {
    SH_LOG("Refused a keyed archive: {}", reason);
    return std::nullopt;
}

}  // namespace

KeyedUnarchiver::KeyedUnarchiver(const PlistValue::Array& objects, const ClassRegistry& classes)
    : objects_(objects), classes_(classes), inProgress_(objects.size(), false) {}

std::optional<ArchiveValue> KeyedUnarchiver::unarchiveObjectWithData(std::string_view archive,
                                                                     const ClassRegistry& classes) {
    const auto plist = PlistCodec::parse(archive);
    if (!plist) return refuse("no property list");
    return unarchiveObjectWithPropertyList(*plist, classes);
}

std::optional<ArchiveValue> KeyedUnarchiver::unarchiveObjectWithPropertyList(const PlistValue& archive,
                                                                             const ClassRegistry& classes) {
    const auto* keys = archive.asDictionary();
    if (!keys) return refuse("not a dictionary");
    const PlistValue* archiver = find(*keys, kArchiverKey);
    if (!archiver || archiver->asString() == nullptr || *archiver->asString() != kArchiverName) {
        return refuse(fmt::format("written by {}", archiver ? archiver->description() : "no archiver"));
    }
    const PlistValue* version = find(*keys, kVersionKey);
    if (!version || version->asInteger() != kVersion) {
        return refuse(fmt::format("version {}", version ? version->description() : "missing"));
    }
    const PlistValue* objects = find(*keys, kObjectsKey);
    if (!objects || !objects->isArray() || objects->asArray()->empty() ||
        objects->asArray()->front() != PlistValue(kNullMarker)) {
        return refuse("no object table starting with $null");
    }
    const PlistValue* top = find(*keys, kTopKey);
    const PlistValue* root = top && top->isDictionary() ? find(*top->asDictionary(), kRootKey) : nullptr;
    if (!root || !root->isUid()) return refuse("no root object");

    KeyedUnarchiver reader(*objects->asArray(), classes);
    reader.openObjects_.push_back(top->asDictionary());
    ArchiveValue value = reader.decodeReference(*root);
    if (reader.failed_) return std::nullopt;
    return value;
}

bool KeyedUnarchiver::containsNumberForKey(std::string_view key) const {
    const PlistValue* value = valueForKey(key);
    return value != nullptr && value->isNumber();
}

ArchiveValue KeyedUnarchiver::decodeObjectForKey(std::string_view key) {
    const PlistValue* value = valueForKey(key);
    if (value == nullptr) return {};
    if (!value->isUid()) {
        logWrongKind(key, "an object");
        return {};
    }
    return decodeReference(*value);
}

template <typename Result, typename Access>
std::optional<Result> KeyedUnarchiver::decodeKindForKey(std::string_view key, std::string_view kindName,
                                                        Access access) {
    const ArchiveValue value = decodeObjectForKey(key);
    if (const auto found = access(value)) return Result(*found);
    if (!value.isNull()) logWrongKind(key, kindName);
    return std::nullopt;
}

std::optional<std::string> KeyedUnarchiver::decodeStringForKey(std::string_view key) {
    return decodeKindForKey<std::string>(key, "a string", [](const ArchiveValue& value) { return value.asString(); });
}

std::optional<Date> KeyedUnarchiver::decodeDateForKey(std::string_view key) {
    return decodeKindForKey<Date>(key, "a date", [](const ArchiveValue& value) { return value.asDate(); });
}

std::optional<ArchiveValue::Array> KeyedUnarchiver::decodeArrayForKey(std::string_view key) {
    return decodeKindForKey<ArchiveValue::Array>(key, "an array",
                                                 [](const ArchiveValue& value) { return value.asArray(); });
}

std::optional<PlistValue> KeyedUnarchiver::decodePropertyListForKey(std::string_view key) {
    return decodeKindForKey<PlistValue>(key, "property-list data", [](const ArchiveValue& value) {
        return value.isNull() ? std::nullopt : value.plist();
    });
}

bool KeyedUnarchiver::decodeBoolForKey(std::string_view key) const {
    const PlistValue* number = numberForKey(key);
    return number != nullptr && *number->numberAsReal() != 0;
}

std::int32_t KeyedUnarchiver::decodeInt32ForKey(std::string_view key) const {
    const PlistValue* number = numberForKey(key);
    const std::int64_t value = number != nullptr ? *number->numberAsInteger() : 0;
    if (value < std::numeric_limits<std::int32_t>::min() || value > std::numeric_limits<std::int32_t>::max()) {
        SH_LOG("The value {} under <{}> is beyond 32 bits", value, key);
        return 0;
    }
    return static_cast<std::int32_t>(value);
}

double KeyedUnarchiver::decodeDoubleForKey(std::string_view key) const {
    const PlistValue* number = numberForKey(key);
    return number != nullptr ? *number->numberAsReal() : 0;
}

const PlistValue* KeyedUnarchiver::valueForKey(std::string_view key) const {
    const PlistValue::Dictionary& keys = *openObjects_.back();
    return key.starts_with('$') ? find(keys, escapedKey(key)) : find(keys, key);
}

const PlistValue* KeyedUnarchiver::numberForKey(std::string_view key) const {
    const PlistValue* value = valueForKey(key);
    if (value == nullptr || value->isNumber()) return value;
    logWrongKind(key, "a number");
    return nullptr;
}

void KeyedUnarchiver::logWrongKind(std::string_view key, std::string_view expected) const {
    SH_LOG("The value under <{}> is not {}", key, expected);
}

ArchiveValue KeyedUnarchiver::decodeReference(const PlistValue& reference) {
    if (failed_) return {};
    const auto uid = reference.asUid();
    if (!uid) return fail(fmt::format("a reference that is no UID: {}", reference.description()));
    if (++valuesDecoded_ > kMaximumDecodedValues)
        return fail(fmt::format("more than {} values", kMaximumDecodedValues));
    if (*uid >= objects_.size()) return fail(fmt::format("UID {} beyond the {} objects", *uid, objects_.size()));
    if (*uid == 0) return {};
    const PlistValue& object = objects_[*uid];
    if (const auto* keys = object.asDictionary()) return decodeInstance(*uid, *keys);
    return decodeLeaf(object);
}

ArchiveValue KeyedUnarchiver::decodeLeaf(const PlistValue& leaf) {
    switch (leaf.kind()) {
        case PlistKind::Boolean:
        case PlistKind::Integer:
        case PlistKind::Real:
        case PlistKind::Date:
            return leaf;
        case PlistKind::String:
            return admitBytes(leaf.asString()->size()) ? ArchiveValue(leaf) : ArchiveValue();
        case PlistKind::Data:
            return admitBytes(leaf.asData()->size()) ? ArchiveValue(leaf) : ArchiveValue();
        case PlistKind::Null:
        case PlistKind::Array:
        case PlistKind::Dictionary:
        case PlistKind::Uid:
            break;
    }
    return fail(fmt::format("a value that is no object: {}", leaf.description()));
}

ArchiveValue KeyedUnarchiver::decodeInstance(std::uint64_t uid, const PlistValue::Dictionary& keys) {
    const std::string* className = classNameOf(keys);
    if (className == nullptr) return {};
    if (const auto made = modelObjects_.find(uid); made != modelObjects_.end()) return made->second;
    if (inProgress_[uid]) return fail(fmt::format("object {} of class <{}> holds itself", uid, *className));
    if (nesting_ >= kMaximumNesting) return fail(fmt::format("objects nested deeper than {} levels", kMaximumNesting));

    ++nesting_;
    inProgress_[uid] = true;
    ArchiveValue value;
    if (auto foundationValue = decodeFoundationInstance(*className, keys)) {
        value = std::move(*foundationValue);
    } else if (const auto* factory = classes_.factoryFor(*className)) {
        value = decodeModelObject(uid, keys, *factory);
    } else {
        fail(fmt::format("class <{}>, which is unknown", *className));
    }
    inProgress_[uid] = false;
    --nesting_;
    return failed_ ? ArchiveValue() : value;
}

ArchiveValue KeyedUnarchiver::decodeModelObject(std::uint64_t uid, const PlistValue::Dictionary& keys,
                                                const ClassRegistry::Factory& factory) {
    openObjects_.push_back(&keys);
    std::shared_ptr<Codable> object = factory(*this);
    openObjects_.pop_back();
    if (!object && !failed_) SH_LOG("Object {} couldn't be read; it stands as nil", uid);
    modelObjects_.emplace(uid, object);
    return object;
}

const std::string* KeyedUnarchiver::classNameOf(const PlistValue::Dictionary& keys) {
    const PlistValue* classReference = find(keys, kClassKey);
    const auto uid = classReference ? classReference->asUid() : std::nullopt;
    const PlistValue::Dictionary* description = uid && *uid < objects_.size() ? objects_[*uid].asDictionary() : nullptr;
    const PlistValue* className = description ? find(*description, kClassNameKey) : nullptr;
    if (!className || !className->isString()) {
        fail("an object without a class description");
        return nullptr;
    }
    return className->asString();
}

bool KeyedUnarchiver::admitBytes(std::size_t size) {
    bytesDecoded_ += size;
    if (bytesDecoded_ <= kMaximumDecodedBytes) return true;
    fail(fmt::format("more than {} bytes of strings and data", kMaximumDecodedBytes));
    return false;
}

ArchiveValue KeyedUnarchiver::fail(const std::string& reason) {
    if (!failed_) refuse(reason);
    failed_ = true;
    return {};
}

}  // namespace stowhaven
