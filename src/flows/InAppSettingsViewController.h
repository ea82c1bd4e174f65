#pragma once

#include "flows/SettingsRows.h"

#include <string>

namespace stowhaven {

// The list of switches: each row shows its setting, and a change counts at once, in the
// process's flag and in the settings file together, so the flow sees it without a restart.
class InAppSettingsViewController {
public:
    bool isOn(const SwitchRow& row) const;
    void setOn(const SwitchRow& row, bool on);

    // The lowest battery level for a job, 0 to 1.
    static float batteryLevel();
    // A level outside 0 to 1 is brought to the nearest end.
    void setBatteryLevel(double level);
    // "42%".
    static std::string levelText(double level);

    // Stores the reset the row asks for and resets; the program ends once the reset's alert
    // has gone.
    void activateReset(const SwitchRow& row);

    // A scan was turned on or off: what the main flow loads is not what it would load now.
    bool scansChanged() const { return scansChanged_; }

private:
    bool scansChanged_ = false;
};

}  // namespace stowhaven
