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
// "select folder NAME" works on the items of one folder whose items are chosen one by one,
// "select albums" on the photo and video albums, each side apart (--photos, --videos;
// both without either).
class SelectCommand {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

    // What the options ask of the lists, in their order.
    struct Changes {
        bool all = false;
        bool none = false;
        bool invert = false;
        bool fwCompatible = false;
        std::vector<std::string> only;
        std::vector<std::string> add;
        std::vector<std::string> remove;
        bool any() const {
            return all || none || invert || fwCompatible || !only.empty() || !add.empty() || !remove.empty();
        }
    };

private:
    CLI::App* command_ = nullptr;
    std::string kind_;
    std::string folder_;
    bool asJson_ = false;
    bool restore_ = false;
    bool saveDefault_ = false;
    bool photos_ = false;
    bool videos_ = false;
    Changes changes_;
};

}  // namespace stowhaven
