#pragma once

#include "platform/plist/PlistValue.h"

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

enum class SettingKind { Boolean, Integer, Float, String, Date, Array };

// "boolean", "integer", "float", "string", "date", "array".
std::string_view nameOf(SettingKind kind);

struct SettingKey {
    std::string name;
    SettingKind kind;
    // The registered default; null for a key that is not registered.
    PlistValue defaultValue;
    // The process-wide flag that refreshPreferences mirrors the setting into.
    std::atomic<bool>* flag = nullptr;
    // A password, a token or a key: shown masked.
    bool secret = false;

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
};

}  // namespace stowhaven
