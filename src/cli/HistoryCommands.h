#pragma once

#include <CLI/CLI.hpp>

#include <ostream>

namespace stowhaven {

// "stowhaven history [--json]": the sessions of this device on the current storage.
class HistoryCommands {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    CLI::App* command_ = nullptr;
    bool asJson_ = false;
};

}  // namespace stowhaven
