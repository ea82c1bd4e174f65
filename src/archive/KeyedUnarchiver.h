#pragma once

#include "archive/ArchiveValue.h"
#include "archive/ClassRegistry.h"
#include "platform/Date.h"
#include "platform/plist/PlistValue.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace stowhaven {

// Reads Foundation's keyed archive, binary or XML, in every encoding of strings, arrays,
// sets, dictionaries, data, dates, numbers and the null object that Foundation
// implementations write. Archives come from storage, imported files and servers, so any
// archive may be hostile: whatever is damaged refuses the whole archive with a log line,
// and a value of the wrong kind under a key answers nothing to that one request.
//
// Model objects are made by the factories of a ClassRegistry, which read their fields
// with the decode calls below. A model object referred to twice is made once and shared.
class KeyedUnarchiver {
public:
    // Limits of what one archive may hold or expand to. The archive's own size is limited
    // by PlistCodec::kMaximumSize.
    // Objects and containers inside one another; the reader recurses once per level.
    static constexpr std::size_t kMaximumNesting = 256;
    // References followed, repeats included, so that shared containers can't multiply.
    static constexpr std::size_t kMaximumDecodedValues = 2 * 1024 * 1024;
    // Bytes of strings and data made, repeats included.
    static constexpr std::size_t kMaximumDecodedBytes = 64 * 1024 * 1024;

    // The root object, which is nil for an archive of nil; nothing for a refused archive.
    static std::optional<ArchiveValue> unarchiveObjectWithData(std::string_view archive, const ClassRegistry& classes);
    // The same from the archive's property-list data.
    static std::optional<ArchiveValue> unarchiveObjectWithPropertyList(const PlistValue& archive,
                                                                       const ClassRegistry& classes);

    KeyedUnarchiver(const KeyedUnarchiver&) = delete;
    KeyedUnarchiver& operator=(const KeyedUnarchiver&) = delete;

    // About the keys of the model object being read. A missing key answers nil, false or 0
    // without a log line; a value of another kind answers the same with one.
    // A number written in place under the key, as the encode calls of numbers write them.
    bool containsNumberForKey(std::string_view key) const;
    ArchiveValue decodeObjectForKey(std::string_view key);
    std::optional<std::string> decodeStringForKey(std::string_view key);
    std::optional<Date> decodeDateForKey(std::string_view key);
    std::optional<ArchiveValue::Array> decodeArrayForKey(std::string_view key);
    // Property-list data only: nothing when a model object is inside.
    std::optional<PlistValue> decodePropertyListForKey(std::string_view key);

    // Nothing unless every element is a T.
    template <std::derived_from<Codable> T>
    std::optional<std::vector<std::shared_ptr<T>>> decodeArrayOfObjectsOfClass(std::string_view key) {
        const auto elements = decodeArrayForKey(key);
        if (!elements) return std::nullopt;
        std::vector<std::shared_ptr<T>> objects;
        objects.reserve(elements->size());
        for (const ArchiveValue& element : *elements) {
            auto object = element.object<T>();
            if (!object) {
                logWrongKind(key, "an array of objects of the class asked for");
                return std::nullopt;
            }
            objects.push_back(std::move(object));
        }
        return objects;
    }

    // Numbers convert as Foundation converts them: booleans are 0 and 1, reals lose their
    // fraction on the way to an integer, and any number but 0 is true.
    bool decodeBoolForKey(std::string_view key) const;
    // 0, with a log line, for a value beyond 32 bits.
    std::int32_t decodeInt32ForKey(std::string_view key) const;
    double decodeDoubleForKey(std::string_view key) const;

private:
    KeyedUnarchiver(const PlistValue::Array& objects, const ClassRegistry& classes);

    const PlistValue* valueForKey(std::string_view key) const;
    const PlistValue* numberForKey(std::string_view key) const;
    void logWrongKind(std::string_view key, std::string_view expected) const;

    // The value a UID refers to; every reference read goes through here.
    ArchiveValue decodeReference(const PlistValue& reference);
    ArchiveValue decodeLeaf(const PlistValue& leaf);
    ArchiveValue decodeInstance(std::uint64_t uid, const PlistValue::Dictionary& keys);
    ArchiveValue decodeModelObject(std::uint64_t uid, const PlistValue::Dictionary& keys,
                                   const ClassRegistry::Factory& factory);
    const std::string* classNameOf(const PlistValue::Dictionary& keys);
    template <typename Result, typename Access>
    std::optional<Result> decodeKindForKey(std::string_view key, std::string_view kindName, Access access);

    // Foundation's classes (KeyedUnarchiverFoundation.cpp); nothing for another class.
    std::optional<ArchiveValue> decodeFoundationInstance(std::string_view className,
                                                         const PlistValue::Dictionary& keys);
    ArchiveValue decodeString(const PlistValue::Dictionary& keys, bool isMutable);
    ArchiveValue decodeData(const PlistValue::Dictionary& keys, bool isMutable);
    ArchiveValue decodeDate(const PlistValue::Dictionary& keys, bool isMutable);
    ArchiveValue decodeNumber(const PlistValue::Dictionary& keys, bool isMutable);
    ArchiveValue decodeNull(const PlistValue::Dictionary& keys, bool isMutable);
    ArchiveValue decodeArray(const PlistValue::Dictionary& keys, bool isMutable);
    ArchiveValue decodeDictionary(const PlistValue::Dictionary& keys, bool isMutable);
    // The elements under "NS.objects", or under "NS.object.0", "NS.object.1"... as some
    // implementations write them ("NS.key.0"... for a dictionary's keys).
    std::optional<ArchiveValue::Array> decodeElements(const PlistValue::Dictionary& keys, const char* arrayKey,
                                                      std::string_view numberedKeyPrefix);
    // A field of a Foundation object, written either in place or as a reference.
    ArchiveValue decodeField(const PlistValue::Dictionary& keys, std::string_view key);
    bool admitBytes(std::size_t size);

    // Refuses the whole archive, logging the first reason, and answers nil.
    ArchiveValue fail(const std::string& reason);

    const PlistValue::Array& objects_;
    const ClassRegistry& classes_;
    // The keys of the model objects being read, innermost last; "$top" first.
    std::vector<const PlistValue::Dictionary*> openObjects_;
    std::vector<bool> inProgress_;
    std::unordered_map<std::uint64_t, std::shared_ptr<Codable>> modelObjects_;
    std::size_t nesting_ = 0;
    std::size_t valuesDecoded_ = 0;
    std::size_t bytesDecoded_ = 0;
    bool failed_ = false;
};

}  // namespace stowhaven
