#include "core/Supervisor.h"

#include "platform/Log.h"
#include "platform/UserDefaults.h"

namespace stowhaven {

std::optional<std::string> Supervisor::lowLevelGetStringPreferencesDataForKey(std::string_view key) const {
    return UserDefaults::standard().string(key);
}

std::optional<PlistValue::Data> Supervisor::lowLevelGetDataPreferencesDataForKey(std::string_view key) const {
    return UserDefaults::standard().data(key);
}

std::optional<PlistValue> Supervisor::lowLevelGetNumberPreferencesDataForKey(std::string_view key) const {
    return UserDefaults::standard().number(key);
}

bool Supervisor::lowLevelGetBooleanPreferencesDataForKey(std::string_view key) const {
    return UserDefaults::standard().boolean(key);
}

std::optional<Date> Supervisor::lowLevelGetDatePreferencesDataForKey(std::string_view key) const {
    return UserDefaults::standard().date(key);
}

std::optional<PlistValue::Array> Supervisor::lowLevelGetArrayPreferencesDataForKey(std::string_view key) const {
    return UserDefaults::standard().array(key);
}

std::optional<PlistValue::Dictionary> Supervisor::lowLevelGetDictionaryPreferencesDataForKey(
    std::string_view key) const {
    return UserDefaults::standard().dictionary(key);
}

bool Supervisor::lowLevelKeyExists(std::string_view key) const { return UserDefaults::standard().keyExists(key); }

void Supervisor::lowLevelStorePreferencesData(PlistValue value, std::string_view key) {
    if (key.empty()) {
        SH_LOG("Can't persist a NULL key!");
        return;
    }
    UserDefaults::standard().set(key, std::move(value));
}

}  // namespace stowhaven
