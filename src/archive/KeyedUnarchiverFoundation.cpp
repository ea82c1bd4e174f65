// Foundation's own classes, in each encoding that Foundation implementations write.

#include "archive/KeyedArchiveFormat.h"
#include "archive/KeyedUnarchiver.h"
#include "platform/plist/Utf8.h"

#include <fmt/format.h>

namespace stowhaven {

using namespace keyedarchive;

namespace {

// Strings and data as raw bytes, from coders that aren't NSKeyedArchiver itself.
constexpr const char* kBytesKey = "NS.bytes";
// Numbers written as objects rather than in place.
constexpr const char* kNumberKey = "NS.number";
constexpr const char* kBooleanKeys[] = {"NS.boolval", "NS.BOOLval"};
constexpr const char* kIntegerKey = "NS.intval";
constexpr const char* kRealKey = "NS.dblval";

using Decoder = ArchiveValue (KeyedUnarchiver::*)(const PlistValue::Dictionary&, bool);

}  // namespace

std::optional<ArchiveValue> KeyedUnarchiver::decodeFoundationInstance(std::string_view className,
                                                                      const PlistValue::Dictionary& keys) {
    struct FoundationClass {
        std::string_view name;
        Decoder decode;
        bool isMutable;
    };
    static constexpr FoundationClass kClasses[] = {
        {"NSString", &KeyedUnarchiver::decodeString, false},
        {"NSMutableString", &KeyedUnarchiver::decodeString, true},
        {"NSArray", &KeyedUnarchiver::decodeArray, false},
        {"NSMutableArray", &KeyedUnarchiver::decodeArray, true},
        // Sets read as arrays: no archive of this system holds one for its own sake.
        {"NSSet", &KeyedUnarchiver::decodeArray, false},
        {"NSMutableSet", &KeyedUnarchiver::decodeArray, true},
        {"NSDictionary", &KeyedUnarchiver::decodeDictionary, false},
        {"NSMutableDictionary", &KeyedUnarchiver::decodeDictionary, true},
        {"NSData", &KeyedUnarchiver::decodeData, false},
        {"NSMutableData", &KeyedUnarchiver::decodeData, true},
        {"NSDate", &KeyedUnarchiver::decodeDate, false},
        {"NSNumber", &KeyedUnarchiver::decodeNumber, false},
        {"NSNull", &KeyedUnarchiver::decodeNull, false},
    };
    for (const auto& foundationClass : kClasses) {
        if (foundationClass.name == className) return (this->*foundationClass.decode)(keys, foundationClass.isMutable);
    }
    return std::nullopt;
}

ArchiveValue KeyedUnarchiver::decodeString(const PlistValue::Dictionary& keys, bool isMutable) {
    std::string text;
    if (keys.contains(kStringKey)) {
        const ArchiveValue field = decodeField(keys, kStringKey);
        if (!field.isString()) return fail("a string object whose text is no string");
        text = *field.asString();
    } else {
        const ArchiveValue field = decodeField(keys, kBytesKey);
        const PlistValue::Data* bytes = field.asData();
        if (!bytes) return fail("a string object without its text");
        text.assign(bytes->begin(), bytes->end());
        if (!isValidUtf8(text)) return fail("a string object whose bytes aren't UTF-8");
    }
    return isMutable ? ArchiveValue::mutableString(std::move(text)) : ArchiveValue(std::move(text));
}

ArchiveValue KeyedUnarchiver::decodeData(const PlistValue::Dictionary& keys, bool isMutable) {
    const ArchiveValue field = decodeField(keys, keys.contains(kDataKey) ? kDataKey : kBytesKey);
    const PlistValue::Data* bytes = field.asData();
    if (!bytes) return fail("a data object without its bytes");
    return isMutable ? ArchiveValue::mutableData(*bytes) : ArchiveValue(*bytes);
}

ArchiveValue KeyedUnarchiver::decodeDate(const PlistValue::Dictionary& keys, bool) {
    const ArchiveValue field = decodeField(keys, kTimeKey);
    if (!field.isNumber()) return fail("a date object without its time");
    return Date(*field.asLeaf()->numberAsReal());
}

ArchiveValue KeyedUnarchiver::decodeNumber(const PlistValue::Dictionary& keys, bool) {
    const auto numberUnder = [&](std::string_view key) -> std::optional<PlistValue> {
        if (!keys.contains(key)) return std::nullopt;
        const ArchiveValue field = decodeField(keys, key);
        if (!field.isNumber()) {
            fail(fmt::format("a number object whose {} is no number", key));
            return std::nullopt;
        }
        return *field.asLeaf();
    };
    if (auto number = numberUnder(kNumberKey)) return *number;
    for (const char* key : kBooleanKeys) {
        if (auto number = numberUnder(key)) return *number->numberAsReal() != 0;
    }
    if (auto number = numberUnder(kIntegerKey)) return *number->numberAsInteger();
    if (auto number = numberUnder(kRealKey)) return *number->numberAsReal();
    return fail("a number object without its value");
}

ArchiveValue KeyedUnarchiver::decodeNull(const PlistValue::Dictionary&, bool) {
    return {};
}

ArchiveValue KeyedUnarchiver::decodeArray(const PlistValue::Dictionary& keys, bool isMutable) {
    auto elements = decodeElements(keys, kObjectsOfContainerKey, "NS.object.");
    if (!elements) return {};
    return isMutable ? ArchiveValue::mutableArray(std::move(*elements)) : ArchiveValue(std::move(*elements));
}

ArchiveValue KeyedUnarchiver::decodeDictionary(const PlistValue::Dictionary& keys, bool isMutable) {
    auto entryKeys = decodeElements(keys, kKeysOfDictionaryKey, "NS.key.");
    auto entryValues = decodeElements(keys, kObjectsOfContainerKey, "NS.object.");
    if (!entryKeys || !entryValues) return {};
    if (entryKeys->size() != entryValues->size()) {
        return fail(fmt::format("a dictionary of {} keys and {} values", entryKeys->size(), entryValues->size()));
    }
    ArchiveValue::Dictionary entries;
    for (std::size_t index = 0; index < entryKeys->size(); ++index) {
        const std::string* key = (*entryKeys)[index].asString();
        if (!key) return fail("a dictionary key that is no string");
        entries.insert_or_assign(*key, std::move((*entryValues)[index]));
    }
    return isMutable ? ArchiveValue::mutableDictionary(std::move(entries)) : ArchiveValue(std::move(entries));
}

std::optional<ArchiveValue::Array> KeyedUnarchiver::decodeElements(const PlistValue::Dictionary& keys,
                                                                   const char* arrayKey,
                                                                   std::string_view numberedKeyPrefix) {
    ArchiveValue::Array elements;
    if (const auto found = keys.find(arrayKey); found != keys.end()) {
        const PlistValue::Array* references = found->second.asArray();
        if (!references) {
            fail(fmt::format("{} that is no array", arrayKey));
            return std::nullopt;
        }
        elements.reserve(references->size());
        for (const PlistValue& reference : *references) elements.push_back(decodeReference(reference));
    } else {
        // The numbered keys end at the first missing one; there are no more than the keys.
        for (std::size_t index = 0;; ++index) {
            const auto numbered = keys.find(fmt::format("{}{}", numberedKeyPrefix, index));
            if (numbered == keys.end()) break;
            elements.push_back(decodeReference(numbered->second));
        }
    }
    if (failed_) return std::nullopt;
    return elements;
}

ArchiveValue KeyedUnarchiver::decodeField(const PlistValue::Dictionary& keys, std::string_view key) {
    const auto found = keys.find(key);
    if (found == keys.end()) return {};
    const PlistValue& field = found->second;
    if (field.isUid()) return decodeReference(field);
    if (field.isArray() || field.isDictionary()) return fail(fmt::format("a container in place under {}", key));
    return decodeLeaf(field);
}

}  // namespace stowhaven
