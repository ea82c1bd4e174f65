#pragma once

#include "platform/plist/PlistValue.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

enum class SettingKind { Boolean, Integer, Float, String, Date, Array };

// "boolean", "integer", "float", "string", "date", "array".
std::string_view nameOf(SettingKind kind);

// The values an integer setting may take, both ends included.
struct IntegerRange {
    std::int64_t lowest;
    std::int64_t highest;

    bool contains(std::int64_t value) const { return value >= lowest && value <= highest; }
    std::int64_t nearest(std::int64_t value) const { return value < lowest ? lowest : value > highest ? highest : value; }
};

struct SettingKey {
    std::string name;
    SettingKind kind;
    // The registered default; null for a key that is not registered.
    PlistValue defaultValue;
    // The process-wide flag that refreshPreferences mirrors the setting into.
    std::atomic<bool>* flag = nullptr;
    // A password, a token or a key: shown masked.
    bool secret = false;
    // Every integer setting has one.
    std::optional<IntegerRange> range;

    bool isRegistered() const { return !defaultValue.isNull(); }
};

// The one table of the program's settings keys: those registered at start, the others
// the program writes itself, the selection defaults and the storage engines' keys.
class SettingsKeys {
public:
    // Registered keys first, in the order of registration.
    static const std::vector<SettingKey>& all();
    // Nothing for a key that is no setting of the program.
    static const SettingKey* find(std::string_view name);
    // What registerDefaults takes at start.
    static PlistValue::Dictionary registeredDefaults();

    // A stored value of the integer setting NAME as the program may use it: one outside the
    // setting's range (written by hand or by an older program) reads as the nearest end of
    // the range, with a log line.
    static std::int64_t withinRange(std::string_view name, std::int64_t stored);
};

}  // namespace stowhaven
