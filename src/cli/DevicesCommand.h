#pragma once

#include <CLI/CLI.hpp>

#include <ostream>

namespace stowhaven {

// "stowhaven devices": the backups of every device on the current storage.
class DevicesCommand {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    CLI::App* command_ = nullptr;
};

}  // namespace stowhaven
