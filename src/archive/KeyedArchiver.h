#pragma once

#include "archive/ArchiveValue.h"
#include "platform/plist/PlistValue.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace stowhaven {

// Writes an object graph as Foundation's keyed archive, so that the device's own
// unarchiver reads it: "$objects" in the order Foundation appends them (an object, then
// what it holds, then its class description), "$null" first, one class description per
// class name, and each model object once however often it is referred to.
//
// Model objects write their fields with the encode calls below from their encodeWithCoder.
class KeyedArchiver {
public:
    // The archive as a binary property list. Nothing, with a log line, for a graph that
    // the reader would refuse: a model object that holds itself, nesting or size beyond
    // KeyedUnarchiver's limits, a UID, or a text that no property list can hold.
    static std::optional<std::string> archivedData(const ArchiveValue& root);
    // The same archive as property-list data.
    static std::optional<PlistValue> archivedPlist(const ArchiveValue& root);

    KeyedArchiver(const KeyedArchiver&) = delete;
    KeyedArchiver& operator=(const KeyedArchiver&) = delete;

    void encodeObject(const ArchiveValue& value, std::string_view key);
    void encodeBool(bool value, std::string_view key);
    void encodeInt32(std::int32_t value, std::string_view key);
    void encodeInt64(std::int64_t value, std::string_view key);
    void encodeFloat(float value, std::string_view key);
    void encodeDouble(double value, std::string_view key);

private:
    KeyedArchiver();

    // Appends what the value needs and answers the UID that refers to it; nil is UID 0.
    PlistValue referenceTo(const ArchiveValue& value);
    // Inside arrays and dictionaries nil stands as the null object.
    PlistValue referenceToElement(const ArchiveValue& value);
    PlistValue referenceToLeaf(const PlistValue& leaf, bool isMutable);
    PlistValue referenceToModelObject(const ArchiveValue::Object& object);
    PlistValue referenceToNullObject();

    // Writes one object of a class: its slot comes first, then what `fill` appends while
    // it sets the object's keys, then the class description.
    template <typename Fill>
    PlistValue appendInstance(const std::vector<std::string>& classChain, Fill fill);
    PlistValue classReference(const std::vector<std::string>& classChain);
    PlistValue append(PlistValue object);
    void setValue(std::string_view key, PlistValue value);
    void countBytes(std::size_t size);
    void fail(const std::string& reason);

    PlistValue::Array objects_;
    // The keys of the objects being written, innermost last; "$top" first.
    std::vector<PlistValue::Dictionary> openObjects_;
    std::unordered_map<const Codable*, std::uint64_t> modelObjectUids_;
    std::unordered_set<const Codable*> modelObjectsInProgress_;
    std::unordered_map<std::string, std::uint64_t> classUids_;
    std::optional<std::uint64_t> nullObjectUid_;
    std::size_t nesting_ = 0;
    std::size_t referencesWritten_ = 0;
    std::size_t bytesWritten_ = 0;
    bool failed_ = false;
};

}  // namespace stowhaven
