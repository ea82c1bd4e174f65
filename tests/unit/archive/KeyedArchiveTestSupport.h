#pragma once

// Hand-made keyed archives, for encodings and damage that the archiver never writes.

#include "archive/KeyedUnarchiver.h"
#include "core/ModelClasses.h"

#include <string>

namespace stowhaven::test {

inline PlistValue uid(std::uint64_t value) { return PlistValue::uid(value); }

// Foundation's description of a class whose superclass is NSObject.
inline PlistValue classDescription(const std::string& className) {
    return PlistValue::Dictionary{{"$classname", className}, {"$classes", PlistValue::Array{className, "NSObject"}}};
}

// An archive whose "$objects" are "$null" and then `objects`, so that the first of them
// is UID 1, which is also the root unless told otherwise.
inline PlistValue handMadeArchive(PlistValue::Array objects, PlistValue root = PlistValue::uid(1)) {
    objects.insert(objects.begin(), "$null");
    return PlistValue::Dictionary{{"$archiver", "NSKeyedArchiver"},
                                  {"$version", 100000},
                                  {"$top", PlistValue::Dictionary{{"root", std::move(root)}}},
                                  {"$objects", std::move(objects)}};
}

inline std::optional<ArchiveValue> unarchive(const PlistValue& archive) {
    return KeyedUnarchiver::unarchiveObjectWithPropertyList(archive, modelClasses());
}

}  // namespace stowhaven::test
