#pragma once

#include "platform/services/Battery.h"

#include <atomic>

namespace stowhaven {

// Reads the host's power supplies. A host without a battery runs on mains, and reports a
// full battery.
class HostBattery final : public Battery {
public:
    void setMonitoringEnabled(bool enabled) override { monitoring_ = enabled; }
    bool isMonitoringEnabled() const override { return monitoring_; }
    float level() const override;
    BatteryState state() const override;

private:
    std::atomic<bool> monitoring_{false};
};

}  // namespace stowhaven
