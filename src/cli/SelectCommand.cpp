#include "cli/SelectCommand.h"

namespace stowhaven {

void SelectCommand::add(CLI::App& app) {
    command_ = app.add_subcommand("select", "Choose what a backup or a restore covers");
}

int SelectCommand::run(std::ostream& /*out*/, std::ostream& errors) const {
    errors << "stowhaven: select is not there yet\n";
    return 1;
}

}  // namespace stowhaven
