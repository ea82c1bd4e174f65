#pragma once

#include "cli/PresetAnswers.h"
#include "cli/TerminalAlerts.h"
#include "cli/TerminalPrompt.h"
#include "cli/TerminalScreen.h"
#include "flows/MainViewController.h"
#include "platform/TerminalInput.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <ostream>

namespace stowhaven {

// The main flow on a terminal, for one command or for the interactive session. For as
// long as the object lives, the flow's alerts, waiting indicator and screen are the
// terminal's, and Ctrl-C during a job asks whether to cancel it (a second Ctrl-C says yes;
// without a terminal the first cancels). Made and used on the main thread.
class TerminalFlow {
public:
    struct Options {
        PresetAnswers presets;
        // A terminal to ask on; without one only the presets answer.
        bool interactive = false;
        // The command names its job, so no automatic backup is decided on at the load.
        bool jobNamed = true;
    };

    TerminalFlow(std::ostream& out, Options options);
    ~TerminalFlow();
    TerminalFlow(const TerminalFlow&) = delete;
    TerminalFlow& operator=(const TerminalFlow&) = delete;

    // The screen's first appearance; returns once the first load has ended, false when the
    // flow loaded nothing (every scan off, say).
    bool appear();
    // Serves the main queue until no job runs, no automatic backup is about to start and
    // nothing waits there.
    void settle();

    MainViewController& controller() { return *controller_; }
    TerminalAlerts& alerts() { return *alerts_; }
    TerminalScreen& screen() { return *screen_; }
    // Present with a terminal.
    TerminalPrompt* prompt() { return prompt_ ? &*prompt_ : nullptr; }
    std::ostream& out() { return out_; }
    // The terminal's width in columns, to which every text is wrapped.
    std::size_t width() const { return width_; }
    // The user left a question with Ctrl-C or the end of the input.
    bool userLeft() const { return alerts_->userLeft(); }

    // Ctrl-C, from the thread that watches the signals. False when no flow is there to take
    // it, or when it was not for a job or a question, so that the program ends.
    static bool interruptCurrent();

private:
    bool interrupt();

    std::ostream& out_;
    std::size_t width_;
    bool interactive_;
    TerminalInput input_;
    std::optional<TerminalPrompt> prompt_;
    std::shared_ptr<TerminalAlerts> alerts_;
    std::shared_ptr<TerminalScreen> screen_;
    std::shared_ptr<MainViewController> controller_;
    bool jobNamed_;
};

}  // namespace stowhaven
