#pragma once

namespace stowhaven {

enum class BatteryState { Unknown, Unplugged, Charging, Full };

// The device's battery. Without monitoring the level is -1 and the state unknown, as on
// the device.
class Battery {
public:
    virtual ~Battery() = default;
    virtual void setMonitoringEnabled(bool enabled) = 0;
    virtual bool isMonitoringEnabled() const = 0;
    // 0 to 1, or -1 when unknown.
    virtual float level() const = 0;
    virtual BatteryState state() const = 0;
};

}  // namespace stowhaven
