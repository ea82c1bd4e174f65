#pragma once

#include <CLI/CLI.hpp>

#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven history [--json]": the sessions of this device on the current storage;
// "history delete STAMP [--yes]" deletes one of them from the storage; "history use STAMP"
// makes one the session that the run's restore takes.
class HistoryCommands {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    int deleteSession(std::ostream& out, std::ostream& errors) const;
    int useSession(std::ostream& out, std::ostream& errors) const;

    CLI::App* command_ = nullptr;
    CLI::App* delete_ = nullptr;
    CLI::App* use_ = nullptr;
    bool asJson_ = false;
    std::string stamp_;
    bool yes_ = false;
};

}  // namespace stowhaven
