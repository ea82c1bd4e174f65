#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace stowhaven {

// "stowhaven share text|mail|vcard|clipboard|pdf": what leaves the device from the main
// screen's options.
class ShareCommands {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    int runParsed(std::ostream& out, std::ostream& errors) const;

    CLI::App* command_ = nullptr;
    CLI::App* text_ = nullptr;
    CLI::App* mail_ = nullptr;
    CLI::App* vCard_ = nullptr;
    CLI::App* clipboard_ = nullptr;
    CLI::App* pdf_ = nullptr;
    std::optional<std::string> file_;
    std::vector<std::string> recipients_;
};

}  // namespace stowhaven
