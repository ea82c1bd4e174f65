#pragma once

#include "core/ProgressDisplay.h"

#include <cstddef>
#include <ostream>
#include <string>

namespace stowhaven {

// The waiting indicator on a terminal: a line with its label each time the label changes
// while it is up, wrapped to the terminal's width.
class TerminalActivity final : public ProgressDisplay {
public:
    TerminalActivity(std::ostream& out, std::size_t width) : out_(out), width_(width) {}

    bool isActive() const override { return active_; }
    void show() override { active_ = true; }
    void hide() override {
        active_ = false;
        label_.clear();
    }
    void setLabelText(const std::string& text) override;
    void setDetailsLabelText(const std::string& /*text*/) override {}

private:
    std::ostream& out_;
    std::size_t width_;
    bool active_ = false;
    std::string label_;
};

}  // namespace stowhaven
