#pragma once

#include <CLI/CLI.hpp>

#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven devices [--json]": the backups of every device on the current storage, and
// "devices dates NAME", "devices rename OLD NEW", "devices delete NAME [--yes]" and
// "devices adopt NAME [--yes]" on one of them. A NAME is one entry of that list.
class DevicesCommand {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    int list(std::ostream& out, std::ostream& errors) const;
    int dates(std::ostream& out, std::ostream& errors) const;
    int rename(std::ostream& out, std::ostream& errors) const;
    int remove(std::ostream& out, std::ostream& errors) const;
    int adopt(std::ostream& out, std::ostream& errors) const;

    CLI::App* command_ = nullptr;
    CLI::App* dates_ = nullptr;
    CLI::App* rename_ = nullptr;
    CLI::App* delete_ = nullptr;
    CLI::App* adopt_ = nullptr;
    bool asJson_ = false;
    std::string name_;
    std::string newName_;
    bool yes_ = false;
};

}  // namespace stowhaven
