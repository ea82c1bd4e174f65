#pragma once

#include "core/AlertPresenter.h"

#include <ostream>

namespace stowhaven {

// Alerts on the terminal: the title and the message, one line. Nobody is there to answer
// them, so they go at once by their first button.
class TerminalAlertPresenter final : public AlertPresenter {
public:
    explicit TerminalAlertPresenter(std::ostream& out) : out_(out) {}

    void present(const Alert& alert, Answered onAnswer) override;

private:
    std::ostream& out_;
};

}  // namespace stowhaven
