#pragma once

#include <CLI/CLI.hpp>

#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven share vcard FILE": what leaves the device from the main screen's options.
class ShareCommands {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    CLI::App* command_ = nullptr;
    CLI::App* vCard_ = nullptr;
    std::string file_;
};

}  // namespace stowhaven
