#include "cli/ShareCommands.h"

#include "cli/ShareCommand.h"

namespace stowhaven {

void ShareCommands::add(CLI::App& app) {
    command_ = app.add_subcommand("share", "Send a session to another device");
    command_->require_subcommand(1);
    vCard_ = command_->add_subcommand("vcard", "Write the current session as a vCard");
    vCard_->add_option("file", file_, "The vCard file to write")->required();
}

int ShareCommands::run(std::ostream& out, std::ostream& errors) const {
    return ShareCommand::runVCard(file_, out, errors);
}

}  // namespace stowhaven
