#include "cli/TerminalScreen.h"

#include "cli/TerminalPrompt.h"

#include <utility>

namespace stowhaven {

TerminalScreen::TerminalScreen(std::ostream& out, TerminalPrompt* prompt, bool redrawInPlace, std::size_t width)
    : out_(out), prompt_(prompt), redrawInPlace_(redrawInPlace), width_(width) {}

void TerminalScreen::showWorking(bool working) {
    if (working) {
        progress_.emplace(out_, redrawInPlace_, width_);
    } else if (progress_) {
        // Every job's last step posts its text, then the fraction 1.0, which can come after the
        // job's end has been told: the last drawing shows it already.
        progress_->setFraction(1.0);
        progress_->finish();
        progress_.reset();
    }
}

// Progress outside a job (the loading's) is the activity line's.
void TerminalScreen::showProgressText(const std::string& text) {
    if (progress_) progress_->setText(text);
}

void TerminalScreen::showProgressFraction(double fraction) {
    if (progress_) progress_->setFraction(fraction);
}

void TerminalScreen::showTransferBanner(const std::string& text) {
    if (progress_) progress_->setBanner(text);
}

void TerminalScreen::breakProgressLine() {
    if (progress_) progress_->finish();
}

// A list of one leaves nothing to choose: its entry opens at once.
void TerminalScreen::chooseFrom(const std::vector<std::string>& options, Choice choice) {
    if (options.size() == 1) {
        choice(0);
    } else {
        choice(prompt_ != nullptr ? prompt_->choose("", options) : std::nullopt);
    }
}

void TerminalScreen::open(const std::vector<FlowScreen>& screens) {
    opened_.insert(opened_.end(), screens.begin(), screens.end());
}

std::vector<FlowScreen> TerminalScreen::takeOpenedScreens() { return std::exchange(opened_, {}); }

}  // namespace stowhaven
