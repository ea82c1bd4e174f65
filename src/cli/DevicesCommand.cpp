#include "cli/DevicesCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/HistoryCommandRun.h"
#include "cli/HistoryScreenState.h"
#include "core/Supervisor.h"
#include "flows/AvailableDeviceBackupController.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace stowhaven {

namespace {

using Controller = AvailableDeviceBackupController;

// The view on the device backups, as the main screen opens it.
std::shared_ptr<Controller> openDevices() {
    const auto controller = Controller::create(std::make_shared<HistoryScreenState>());
    controller->viewDidAppear();
    waitUntilIdle([&controller] { return controller->isWaiting(); });
    return controller;
}

void waitFor(const std::shared_ptr<Controller>& controller) {
    waitUntilIdle([&controller] { return controller->isWaiting(); });
}

bool isListed(const Controller& controller, const std::string& name) {
    const auto& names = controller.deviceBackups();
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string engineName() { return Supervisor::shared().storageEngineName(); }

// Only a name of the list is taken: nothing else reaches the storage.
bool choose(Controller& controller, const std::string& name, std::ostream& errors) {
    if (controller.selectDeviceBackup(name)) return true;
    fmt::print(errors, "stowhaven: no device backup {} on {} (see stowhaven devices)\n", name, engineName());
    return false;
}

// The status of a request that ended: the engine's error, if it failed.
int ended(const Controller& controller, std::ostream& errors) {
    if (!controller.lastError()) return 0;
    fmt::print(errors, "stowhaven: {} refused: {}\n", engineName(), *controller.lastError());
    return 1;
}

}  // namespace

void DevicesCommand::add(CLI::App& app) {
    command_ = app.add_subcommand("devices", "The backups of every device on the current storage");
    command_->add_flag("--json", asJson_, "In JSON");
    command_->require_subcommand(0, 1);
    const char* nameHelp = "The device backup's name, as devices lists it";
    dates_ = command_->add_subcommand("dates", "The dates of a device backup's sessions, newest first");
    dates_->add_option("name", name_, nameHelp)->required();
    rename_ = command_->add_subcommand("rename", "Give a device backup another name");
    rename_->add_option("old", name_, nameHelp)->required();
    rename_->add_option("new", newName_, "The new name")->required();
    delete_ = command_->add_subcommand("delete", "Delete a device backup with all its sessions");
    delete_->add_option("name", name_, nameHelp)->required();
    delete_->add_flag("--yes", yes_, "Delete without asking");
    adopt_ = command_->add_subcommand("adopt", "Copy another device's backups to this device's, where the storage can");
    adopt_->add_option("name", name_, nameHelp)->required();
    adopt_->add_flag("--yes", yes_, "Copy without asking");
}

int DevicesCommand::run(std::ostream& out, std::ostream& errors) const {
    startStorageEngine();
    if (dates_->parsed()) return dates(out, errors);
    if (rename_->parsed()) return rename(out, errors);
    if (delete_->parsed()) return remove(out, errors);
    if (adopt_->parsed()) return adopt(out, errors);
    return list(out, errors);
}

int DevicesCommand::list(std::ostream& out, std::ostream& errors) const {
    HistoryCommandRun run(errors);
    const auto controller = openDevices();
    const std::string own = Controller::thisDeviceBackupName();
    const auto& names = controller->deviceBackups();
    if (asJson_) {
        nlohmann::json list = nlohmann::json::array();
        for (const auto& name : names) list.push_back({{"name", name}, {"thisDevice", name == own}});
        out << list.dump(2) << "\n";
    } else {
        fmt::print(out, "{} device backup(s) on {}\n", names.size(), engineName());
        for (const auto& name : names) fmt::print(out, "  {}{}\n", name, name == own ? "  (this device)" : "");
    }
    return ended(*controller, errors);
}

int DevicesCommand::dates(std::ostream& out, std::ostream& errors) const {
    HistoryCommandRun run(errors);
    const auto controller = openDevices();
    if (!choose(*controller, name_, errors)) return 2;
    waitFor(controller);
    fmt::print(out, "{} session(s) of {} on {}\n", controller->backupDates().size(), name_, engineName());
    for (const auto& date : controller->backupDates()) fmt::print(out, "  {}\n", date);
    return ended(*controller, errors);
}

int DevicesCommand::rename(std::ostream& out, std::ostream& errors) const {
    HistoryCommandRun run(errors);
    const auto controller = openDevices();
    if (!choose(*controller, name_, errors)) return 2;
    waitFor(controller);
    controller->rename(newName_);
    waitFor(controller);
    if (run.shown(Controller::kDuplicateName)) return 1;
    if (const int status = ended(*controller, errors); status != 0) return status;
    if (!isListed(*controller, newName_)) {
        fmt::print(errors, "stowhaven: {} keeps its name on {}\n", name_, engineName());
        return 1;
    }
    fmt::print(out, "Renamed {} to {} on {}.\n", name_, newName_, engineName());
    return 0;
}

int DevicesCommand::remove(std::ostream& out, std::ostream& errors) const {
    HistoryCommandRun run(errors);
    if (!run.mayGoOn(yes_, "devices delete")) return 2;
    const auto controller = openDevices();
    if (!choose(*controller, name_, errors)) return 2;
    waitFor(controller);
    yes_ ? controller->deleteSelectedDeviceBackup() : controller->askToDelete();
    waitFor(controller);
    if (const int status = ended(*controller, errors); status != 0) return status;
    if (isListed(*controller, name_)) {
        fmt::print(errors, "stowhaven: {} stays on {}\n", name_, engineName());
        return 1;
    }
    fmt::print(out, "Deleted the device backup {} from {}.\n", name_, engineName());
    return 0;
}

// An engine that can't take a backup over says so before anything is listed.
int DevicesCommand::adopt(std::ostream& out, std::ostream& errors) const {
    HistoryCommandRun run(errors);
    if (Controller::create(std::make_shared<HistoryScreenState>())->refusesTakeOverOf(name_)) return 1;
    if (!run.mayGoOn(yes_, "devices adopt")) return 2;
    const auto controller = openDevices();
    if (!choose(*controller, name_, errors)) return 2;
    waitFor(controller);
    yes_ ? controller->useSelectedDeviceBackup() : controller->askToUseSelectedDeviceBackup();
    waitFor(controller);
    if (const int status = ended(*controller, errors); status != 0) return status;
    // Refused, or the user said no.
    if (!controller->hasTakenOver()) return 1;
    fmt::print(out, "The backups of {} are this device's ({}) on {}.\n", name_, Controller::thisDeviceBackupName(),
               engineName());
    return 0;
}

}  // namespace stowhaven
