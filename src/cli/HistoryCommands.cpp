#include "cli/HistoryCommands.h"

#include "cli/CatalogueLoad.h"
#include "cli/HistoryCommand.h"
#include "cli/HistoryCommandRun.h"
#include "cli/HistoryScreenState.h"
#include "cli/SessionName.h"
#include "core/Supervisor.h"
#include "flows/BackupSessionsViewController.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

namespace {

using Controller = BackupSessionsViewController;

// The history view opened as the main screen opens it, once the catalogue is loaded.
std::shared_ptr<Controller> openHistory() {
    loadCatalogue();
    const auto controller = Controller::create(std::make_shared<HistoryScreenState>());
    controller->viewDidAppear();
    waitUntilIdle([&controller] { return controller->isWaiting(); });
    return controller;
}

std::optional<std::size_t> rowNamed(const Controller& controller, const std::string& name) {
    const auto& sessions = controller.listBackupSessions();
    for (std::size_t row = 0; row < sessions.size(); ++row) {
        if (isNameOf(name, *sessions[row])) return row;
    }
    return std::nullopt;
}

std::string described(const BackupSession& session) {
    return fmt::format("{} \"{}\"", session.sessionDate() ? StorageLayout::stamp(*session.sessionDate()) : "?",
                       session.title().value_or(""));
}

// Another device's session, or a text that names none, is not this device's: nothing goes.
std::optional<std::size_t> chooseSession(Controller& controller, const std::string& name, std::ostream& errors) {
    const auto row = rowNamed(controller, name);
    if (!row) {
        fmt::print(errors, "stowhaven: no session {} of this device on {} (see stowhaven history)\n", name,
                   Supervisor::shared().storageEngineName());
        return std::nullopt;
    }
    controller.selectRow(*row);
    return row;
}

}  // namespace

void HistoryCommands::add(CLI::App& app) {
    command_ = app.add_subcommand("history", "List the sessions on the current storage, newest first");
    command_->add_flag("--json", asJson_, "In JSON");
    command_->require_subcommand(0, 1);
    const char* stampHelp = "The session's stamp (2024-05-01_10~00~00) or its date as the history lists it";
    delete_ = command_->add_subcommand("delete", "Delete a session of this device from the storage");
    delete_->add_option("stamp", stamp_, stampHelp)->required();
    delete_->add_flag("--yes", yes_, "Delete without asking");
    use_ = command_->add_subcommand("use", "Make a session the one that this run restores");
    use_->add_option("stamp", stamp_, stampHelp)->required();
}

int HistoryCommands::run(std::ostream& out, std::ostream& errors) const {
    if (delete_->parsed()) return deleteSession(out, errors);
    if (use_->parsed()) return useSession(out, errors);
    return HistoryCommand::run(asJson_, out, errors);
}

int HistoryCommands::deleteSession(std::ostream& out, std::ostream& errors) const {
    HistoryCommandRun run(errors);
    if (!run.mayGoOn(yes_, "history delete")) return 2;
    const auto controller = openHistory();
    if (!chooseSession(*controller, stamp_, errors)) return 2;
    const auto session = controller->selectedBackupSession();
    yes_ ? controller->deleteBackupSession() : controller->askToDeleteSelected();
    waitUntilIdle([&controller] { return controller->isWaiting(); });
    const std::string engineName = Supervisor::shared().storageEngineName();
    // Not deleted: the user said no, or the engine failed.
    if (rowNamed(*controller, stamp_)) {
        const auto engine = Supervisor::shared().currentStorageEngine();
        const auto error = engine ? engine->errorMessage() : std::nullopt;
        fmt::print(errors, "stowhaven: session {} stays on {}{}\n", stamp_, engineName, error ? ": " + *error : "");
        return 1;
    }
    fmt::print(out, "Deleted session {} from {}.\n", described(*session), engineName);
    return 0;
}

// The program takes the newest session at every start: the choice holds for this run.
int HistoryCommands::useSession(std::ostream& out, std::ostream& errors) const {
    HistoryCommandRun run(errors);
    const auto controller = openHistory();
    if (!chooseSession(*controller, stamp_, errors)) return 2;
    controller->viewWillDisappear();
    const auto session = controller->selectedBackupSession();
    fmt::print(out,
               "Session {} is the one to restore in this run. Every start takes the newest session again: a later "
               "restore takes this one with stowhaven restore --session {}\n",
               described(*session), StorageLayout::stamp(*session->sessionDate()));
    return 0;
}

}  // namespace stowhaven
