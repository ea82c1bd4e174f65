#include "platform/services/HostBattery.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace stowhaven {

namespace {

const char* const kPowerSupplies = "/sys/class/power_supply";

std::string readLine(const std::filesystem::path& file) {
    std::string line;
    std::ifstream(file) >> line;
    return line;
}

std::optional<std::filesystem::path> findBattery() {
    std::error_code error;
    for (const auto& supply : std::filesystem::directory_iterator(kPowerSupplies, error)) {
        if (readLine(supply.path() / "type") == "Battery") return supply.path();
    }
    return std::nullopt;
}

}  // namespace

float HostBattery::level() const {
    if (!monitoring_) return -1.0f;
    const auto battery = findBattery();
    if (!battery) return 1.0f;
    try {
        return std::stof(readLine(*battery / "capacity")) / 100.0f;
    } catch (const std::exception&) {
        return -1.0f;
    }
}

BatteryState HostBattery::state() const {
    if (!monitoring_) return BatteryState::Unknown;
    const auto battery = findBattery();
    if (!battery) return BatteryState::Full;
    const std::string status = readLine(*battery / "status");
    if (status == "Charging") return BatteryState::Charging;
    // "Not charging": on mains with a battery that doesn't take more.
    if (status == "Full" || status == "Not") return BatteryState::Full;
    if (status == "Discharging") return BatteryState::Unplugged;
    return BatteryState::Unknown;
}

}  // namespace stowhaven
