#include "cli/HistoryCommands.h"

#include "cli/HistoryCommand.h"

namespace stowhaven {

void HistoryCommands::add(CLI::App& app) {
    command_ = app.add_subcommand("history", "List the sessions on the current storage, newest first");
    command_->add_flag("--json", asJson_, "In JSON");
}

int HistoryCommands::run(std::ostream& out, std::ostream& errors) const {
    return HistoryCommand::run(asJson_, out, errors);
}

}  // namespace stowhaven
