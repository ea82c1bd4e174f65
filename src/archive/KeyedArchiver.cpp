#include "archive/KeyedArchiver.h"

#include "archive/KeyedArchiveFormat.h"
#include "archive/KeyedUnarchiver.h"
#include "platform/Log.h"
#include "platform/plist/PlistCodec.h"

namespace stowhaven {

using namespace keyedarchive;

namespace {

const std::vector<std::string> kArrayChain{"NSArray", "NSObject"};
const std::vector<std::string> kMutableArrayChain{"NSMutableArray", "NSArray", "NSObject"};
const std::vector<std::string> kDictionaryChain{"NSDictionary", "NSObject"};
const std::vector<std::string> kMutableDictionaryChain{"NSMutableDictionary", "NSDictionary", "NSObject"};
const std::vector<std::string> kMutableStringChain{"NSMutableString", "NSString", "NSObject"};
const std::vector<std::string> kMutableDataChain{"NSMutableData", "NSData", "NSObject"};
const std::vector<std::string> kDateChain{"NSDate", "NSObject"};
const std::vector<std::string> kNullChain{"NSNull", "NSObject"};

}  // namespace

KeyedArchiver::KeyedArchiver() : objects_{PlistValue(kNullMarker)}, openObjects_(1) {}

std::optional<PlistValue> KeyedArchiver::archivedPlist(const ArchiveValue& root) {
    KeyedArchiver archiver;
    archiver.encodeObject(root, kRootKey);
    if (archiver.failed_) return std::nullopt;
    PlistValue::Dictionary archive;
    archive.emplace(kArchiverKey, kArchiverName);
    archive.emplace(kVersionKey, kVersion);
    archive.emplace(kTopKey, std::move(archiver.openObjects_.front()));
    archive.emplace(kObjectsKey, std::move(archiver.objects_));
    return archive;
}

std::optional<std::string> KeyedArchiver::archivedData(const ArchiveValue& root) {
    const auto archive = archivedPlist(root);
    if (!archive) return std::nullopt;
    return PlistCodec::serialize(*archive, PlistFormat::Binary);
}

void KeyedArchiver::encodeObject(const ArchiveValue& value, std::string_view key) {
    PlistValue reference = referenceTo(value);
    setValue(key, std::move(reference));
}

void KeyedArchiver::encodeBool(bool value, std::string_view key) {
    setValue(key, value);
}

void KeyedArchiver::encodeInt32(std::int32_t value, std::string_view key) {
    setValue(key, value);
}

void KeyedArchiver::encodeInt64(std::int64_t value, std::string_view key) {
    setValue(key, value);
}

void KeyedArchiver::encodeFloat(float value, std::string_view key) {
    setValue(key, value);
}

void KeyedArchiver::encodeDouble(double value, std::string_view key) {
    setValue(key, value);
}

void KeyedArchiver::setValue(std::string_view key, PlistValue value) {
    openObjects_.back().insert_or_assign(escapedKey(key), std::move(value));
}

PlistValue KeyedArchiver::referenceTo(const ArchiveValue& value) {
    if (failed_) return PlistValue::uid(0);
    if (++referencesWritten_ > KeyedUnarchiver::kMaximumDecodedValues) {
        fail(fmt::format("more than {} values", KeyedUnarchiver::kMaximumDecodedValues));
        return PlistValue::uid(0);
    }
    if (const auto* leaf = value.asLeaf()) return referenceToLeaf(*leaf, value.isMutable());
    if (const auto* object = value.asObject()) return referenceToModelObject(*object);
    if (const auto* elements = value.asArray()) {
        return appendInstance(value.isMutable() ? kMutableArrayChain : kArrayChain, [&] {
            PlistValue::Array references;
            references.reserve(elements->size());
            for (const auto& element : *elements) references.push_back(referenceToElement(element));
            return PlistValue::Dictionary{{kObjectsOfContainerKey, std::move(references)}};
        });
    }
    const auto& entries = *value.asDictionary();
    return appendInstance(value.isMutable() ? kMutableDictionaryChain : kDictionaryChain, [&] {
        // All keys first, then all values, as Foundation writes them.
        PlistValue::Array keyReferences;
        PlistValue::Array valueReferences;
        keyReferences.reserve(entries.size());
        valueReferences.reserve(entries.size());
        for (const auto& entry : entries) keyReferences.push_back(referenceTo(entry.first));
        for (const auto& entry : entries) valueReferences.push_back(referenceToElement(entry.second));
        return PlistValue::Dictionary{{kKeysOfDictionaryKey, std::move(keyReferences)},
                                      {kObjectsOfContainerKey, std::move(valueReferences)}};
    });
}

PlistValue KeyedArchiver::referenceToElement(const ArchiveValue& value) {
    return value.isNull() ? referenceToNullObject() : referenceTo(value);
}

PlistValue KeyedArchiver::referenceToLeaf(const PlistValue& leaf, bool isMutable) {
    switch (leaf.kind()) {
        case PlistKind::Null:
            return PlistValue::uid(0);
        case PlistKind::Boolean:
        case PlistKind::Integer:
        case PlistKind::Real:
            return append(leaf);
        case PlistKind::String:
            countBytes(leaf.asString()->size());
            if (!isMutable) return append(leaf);
            return appendInstance(kMutableStringChain, [&] { return PlistValue::Dictionary{{kStringKey, leaf}}; });
        case PlistKind::Data:
            countBytes(leaf.asData()->size());
            if (!isMutable) return append(leaf);
            return appendInstance(kMutableDataChain, [&] { return PlistValue::Dictionary{{kDataKey, leaf}}; });
        case PlistKind::Date:
            return appendInstance(kDateChain, [&] {
                return PlistValue::Dictionary{{kTimeKey, leaf.asDate()->timeIntervalSinceReferenceDate()}};
            });
        case PlistKind::Uid:
        case PlistKind::Array:
        case PlistKind::Dictionary:
            break;
    }
    fail("a UID, which is no value of its own");
    return PlistValue::uid(0);
}

PlistValue KeyedArchiver::referenceToModelObject(const ArchiveValue::Object& object) {
    const Codable* identity = object.get();
    if (const auto written = modelObjectUids_.find(identity); written != modelObjectUids_.end()) {
        return PlistValue::uid(written->second);
    }
    const auto classChain = object->classChain();
    if (classChain.empty()) {
        fail("a model object that names no class");
        return PlistValue::uid(0);
    }
    if (!modelObjectsInProgress_.insert(identity).second) {
        fail(fmt::format("an object of class <{}> that holds itself", classChain.front()));
        return PlistValue::uid(0);
    }
    PlistValue reference = appendInstance(classChain, [&] {
        openObjects_.emplace_back();
        object->encodeWithCoder(*this);
        PlistValue::Dictionary keys = std::move(openObjects_.back());
        openObjects_.pop_back();
        return keys;
    });
    modelObjectsInProgress_.erase(identity);
    modelObjectUids_.emplace(identity, *reference.asUid());
    return reference;
}

PlistValue KeyedArchiver::referenceToNullObject() {
    // NSNull is one object, written once.
    if (!nullObjectUid_) {
        nullObjectUid_ = *appendInstance(kNullChain, [] { return PlistValue::Dictionary{}; }).asUid();
    }
    return PlistValue::uid(*nullObjectUid_);
}

template <typename Fill>
PlistValue KeyedArchiver::appendInstance(const std::vector<std::string>& classChain, Fill fill) {
    if (nesting_ >= KeyedUnarchiver::kMaximumNesting) {
        fail(fmt::format("objects nested deeper than {} levels", KeyedUnarchiver::kMaximumNesting));
        return PlistValue::uid(0);
    }
    ++nesting_;
    const std::uint64_t uid = objects_.size();
    objects_.emplace_back();
    PlistValue::Dictionary keys = fill();
    keys.insert_or_assign(kClassKey, classReference(classChain));
    objects_[uid] = std::move(keys);
    --nesting_;
    return PlistValue::uid(uid);
}

PlistValue KeyedArchiver::classReference(const std::vector<std::string>& classChain) {
    const std::string& className = classChain.front();
    if (const auto written = classUids_.find(className); written != classUids_.end()) {
        return PlistValue::uid(written->second);
    }
    PlistValue reference = append(PlistValue::Dictionary{
        {kClassNameKey, className}, {kClassesKey, PlistValue::Array(classChain.begin(), classChain.end())}});
    classUids_.emplace(className, *reference.asUid());
    return reference;
}

PlistValue KeyedArchiver::append(PlistValue object) {
    objects_.push_back(std::move(object));
    return PlistValue::uid(objects_.size() - 1);
}

void KeyedArchiver::countBytes(std::size_t size) {
    bytesWritten_ += size;
    if (bytesWritten_ > KeyedUnarchiver::kMaximumDecodedBytes) {
        fail(fmt::format("more than {} bytes of strings and data", KeyedUnarchiver::kMaximumDecodedBytes));
    }
}

void KeyedArchiver::fail(const std::string& reason) {
    if (!failed_) SH_LOG("Can't archive {}", reason);
    failed_ = true;
}

}  // namespace stowhaven
