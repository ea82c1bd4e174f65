#include "flows/InAppSettingsViewController.h"

#include "core/ProcessFlags.h"
#include "core/SettingsKeys.h"
#include "core/Supervisor.h"
#include "platform/Log.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace stowhaven {

bool InAppSettingsViewController::isOn(const SwitchRow& row) const {
    return Supervisor::shared().lowLevelGetBooleanPreferencesDataForKey(row.key);
}

void InAppSettingsViewController::setOn(const SwitchRow& row, bool on) {
    if (const SettingKey* key = SettingsKeys::find(row.key); key != nullptr && key->flag != nullptr) {
        key->flag->store(on);
    }
    Supervisor::shared().lowLevelStorePreferencesData(on, row.key);
    if (std::string_view(row.key).starts_with("AutoScan")) scansChanged_ = true;
}

float InAppSettingsViewController::batteryLevel() { return gMinDeviceBatteryLevel; }

void InAppSettingsViewController::setBatteryLevel(double level) {
    const float kept = static_cast<float>(std::isnan(level) ? 0.0 : std::clamp(level, 0.0, 1.0));
    gMinDeviceBatteryLevel = kept;
    Supervisor::shared().lowLevelStorePreferencesData(static_cast<double>(kept), "MinDeviceBatteryLevel");
}

std::string InAppSettingsViewController::levelText(double level) {
    return fmt::format("{}%", static_cast<int>(std::lround(level * 100)));
}

void InAppSettingsViewController::activateReset(const SwitchRow& row) {
    const bool allSettings = std::string_view(row.key) == "ResetSettings";
    SH_LOG("{}", allSettings ? "Resetting all settings..." : "Resetting cloud services...");
    // The reset reads what it is to do from the setting, as at a start asked for it.
    Supervisor& supervisor = Supervisor::shared();
    supervisor.lowLevelStorePreferencesData(true, row.key);
    supervisor.resetAllSettings();
}

}  // namespace stowhaven
