#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// The screens that the main flow opens beside itself.
enum class FlowScreen {
    Settings,            // the settings list
    RestoreLog,          // the log of the last restore's packages
    DeviceBackups,       // this device's sessions
    OtherDeviceBackups,  // the sessions of other devices on the storage
    AppStoreSelection,   // the selection screens, in the order the flow lists them
    PackageSelection,
    FilesSelection,
    OtherSelection,
};

// What the main screen shows of the flow, besides its alerts (AlertPresenter) and its
// waiting indicator (ProgressDisplay). The flow calls it on the main queue and never
// knows what draws it: widgets, a terminal, or a test's recording.
class MainScreen {
public:
    struct Labels {
        std::string title;
        std::string description;
        std::string date;
        std::string size;
    };
    // The index of the option picked, or nothing when the list was left.
    using Choice = std::function<void(std::optional<std::size_t> index)>;

    virtual ~MainScreen() = default;

    // The direction on show: the one of its two main buttons that is off.
    virtual void showMode(bool backupMode) = 0;
    // The backup, restore and settings buttons.
    virtual void setJobButtonsEnabled(bool enabled) = 0;
    virtual void showLabels(const Labels& labels) = 0;
    virtual void showStorage(const std::string& engineName) = 0;
    // A job runs: its progress and its cancel take the place of the quick buttons.
    virtual void showWorking(bool working) = 0;
    virtual void showProgressText(const std::string& text) = 0;
    virtual void showProgressFraction(double fraction) = 0;
    // The banner of a network transfer in progress, "UP: 42% @ 512Kb/s"; empty when none runs.
    virtual void showTransferBanner(const std::string& text) { (void)text; }
    virtual void showNetworkActivity(bool active) = 0;
    virtual void chooseFrom(const std::vector<std::string>& options, Choice choice) = 0;
    // Opens the screens in turn, as each one is left.
    virtual void open(const std::vector<FlowScreen>& screens) = 0;
};

}  // namespace stowhaven
