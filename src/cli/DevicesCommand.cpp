#include "cli/DevicesCommand.h"

namespace stowhaven {

void DevicesCommand::add(CLI::App& app) {
    command_ = app.add_subcommand("devices", "The backups of every device on the current storage");
}

int DevicesCommand::run(std::ostream& /*out*/, std::ostream& errors) const {
    errors << "stowhaven: devices is not there yet\n";
    return 1;
}

}  // namespace stowhaven
