#pragma once

#include "cli/PresetAnswers.h"
#include "core/AlertPresenter.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace stowhaven {

class TerminalPrompt;

// Alerts on the terminal. A question takes its answer from the command line where one was
// given, else from the user where there is a terminal to ask on. A question that a job
// waits for and that nobody can answer is left unanswered, which ends the command; the
// others, and reports, are shown and go by their first button.
class TerminalAlerts final : public AlertPresenter {
public:
    struct Shown {
        int tag;
        std::string title;
        std::string message;
    };

    // Without a prompt nobody is there to ask.
    TerminalAlerts(std::ostream& out, TerminalPrompt* prompt, PresetAnswers presets, std::size_t width);

    void present(const Alert& alert, Answered onAnswer) override;
    // Called before anything is written, so that a line redrawn in place can be ended.
    void setBeforeWriting(std::function<void()> beforeWriting) { beforeWriting_ = std::move(beforeWriting); }

    // Called on the main queue, like present().
    const std::vector<Shown>& shown() const { return shown_; }
    // The first question that nobody answered.
    const std::optional<Alert>& unanswered() const { return unanswered_; }
    // The user left a question with Ctrl-C or the end of the input.
    bool userLeft() const { return userLeft_; }

private:
    void show(const Alert& alert);

    std::ostream& out_;
    TerminalPrompt* prompt_;
    PresetAnswers presets_;
    std::size_t width_;
    std::vector<Shown> shown_;
    std::optional<Alert> unanswered_;
    bool userLeft_ = false;
    std::function<void()> beforeWriting_;
};

}  // namespace stowhaven
