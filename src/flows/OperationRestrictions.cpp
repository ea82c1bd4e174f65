#include "flows/OperationRestrictions.h"

#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "platform/Platform.h"
#include "platform/Strings.h"

#include <cmath>

namespace stowhaven {

std::optional<std::string> operationRestriction() {
    const Battery& battery = Platform::current().battery();
    const bool unplugged = battery.state() == BatteryState::Unplugged;
    if (unplugged && gPluggedInDeviceOnly) return Strings::localized("DEVICE_PLUGGED_IN_MESSAGE");
    const float level = battery.level();
    if (unplugged && gMinDeviceBatteryLevel > 0 && level >= 0 && level < gMinDeviceBatteryLevel) {
        return Strings::format("MIN_BATTERY_LEVEL_MESSAGE", std::lround(level * 100));
    }
    if (!Supervisor::shared().isNetworkStorage()) return std::nullopt;
    const Reachability& network = Platform::current().reachability();
    if (!network.isConnectedToNetwork() || (!network.usingWiFi() && gCloudStorageOnWifiOnly)) {
        return Strings::localized("CLOUD_STORAGE_ON_3G_ONLY_MESSAGE");
    }
    return std::nullopt;
}

}  // namespace stowhaven
