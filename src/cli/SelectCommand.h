#pragma once

#include <CLI/CLI.hpp>

#include <ostream>
#include <string>
#include <vector>

namespace stowhaven {

// "stowhaven select KIND": one list of what a backup (or with --restore, a restore of the
// current session) covers, changed by the options in this order: --all, --none, --invert
// or --fw-compatible, then --only, --add, --remove; with --save-default the result becomes
// the default of that direction, which the next backup or restore takes. Items are named
// as the list shows them in brackets; an unknown name changes and saves nothing.
class SelectCommand {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    CLI::App* command_ = nullptr;
    std::string kind_;
    bool asJson_ = false;
    bool restore_ = false;
    bool saveDefault_ = false;
    bool all_ = false;
    bool none_ = false;
    bool invert_ = false;
    bool fwCompatible_ = false;
    std::vector<std::string> only_;
    std::vector<std::string> add_;
    std::vector<std::string> remove_;
};

}  // namespace stowhaven
