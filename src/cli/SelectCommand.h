#pragma once

#include <CLI/CLI.hpp>

#include <ostream>

namespace stowhaven {

// "stowhaven select": choose what a backup or a restore covers.
class SelectCommand {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    CLI::App* command_ = nullptr;
};

}  // namespace stowhaven
