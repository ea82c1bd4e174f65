#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The vocabulary of Foundation's keyed archive, shared by its writer and its reader.
namespace stowhaven::keyedarchive {

inline constexpr const char* kArchiverKey = "$archiver";
inline constexpr const char* kArchiverName = "NSKeyedArchiver";
inline constexpr const char* kVersionKey = "$version";
inline constexpr std::int64_t kVersion = 100000;
inline constexpr const char* kTopKey = "$top";
inline constexpr const char* kRootKey = "root";
inline constexpr const char* kObjectsKey = "$objects";
// The first object, which UID 0 (nil) refers to.
inline constexpr const char* kNullMarker = "$null";

inline constexpr const char* kClassKey = "$class";
inline constexpr const char* kClassNameKey = "$classname";
inline constexpr const char* kClassesKey = "$classes";

// Keys of Foundation's classes, as their encodeWithCoder: writes them.
inline constexpr const char* kObjectsOfContainerKey = "NS.objects";
inline constexpr const char* kKeysOfDictionaryKey = "NS.keys";
inline constexpr const char* kStringKey = "NS.string";
inline constexpr const char* kDataKey = "NS.data";
inline constexpr const char* kTimeKey = "NS.time";

// A coded key that begins with "$" gets another "$" in front, so that none can be taken
// for one of the archive's own keys such as "$class".
inline std::string escapedKey(std::string_view key) {
    return key.starts_with('$') ? "$" + std::string(key) : std::string(key);
}

}  // namespace stowhaven::keyedarchive
