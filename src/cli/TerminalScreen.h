#pragma once

#include "cli/ProgressBar.h"
#include "flows/MainScreen.h"

#include <optional>
#include <ostream>
#include <vector>

namespace stowhaven {

class TerminalPrompt;

// The main screen on a terminal: what it shows is kept for the session's menu to draw, a
// job's progress goes to a progress bar, lists are asked through the prompt, and the
// screens the flow opens wait for the session to show them.
class TerminalScreen final : public MainScreen {
public:
    // Without a prompt lists are left unanswered.
    TerminalScreen(std::ostream& out, TerminalPrompt* prompt, bool redrawInPlace, std::size_t width);

    void showMode(bool backupMode) override { backupMode_ = backupMode; }
    void setJobButtonsEnabled(bool enabled) override { jobButtonsEnabled_ = enabled; }
    void showLabels(const Labels& labels) override { labels_ = labels; }
    void showStorage(const std::string& engineName) override { storage_ = engineName; }
    void showWorking(bool working) override;
    void showProgressText(const std::string& text) override;
    void showProgressFraction(double fraction) override;
    void showTransferBanner(const std::string& text) override;
    void showNetworkActivity(bool /*active*/) override {}
    void chooseFrom(const std::vector<std::string>& options, Choice choice) override;
    void open(const std::vector<FlowScreen>& screens) override;

    bool backupMode() const { return backupMode_; }
    bool jobButtonsEnabled() const { return jobButtonsEnabled_; }
    const Labels& labels() const { return labels_; }
    const std::optional<std::string>& storage() const { return storage_; }
    // Ends the progress bar's line, so that a message can stand below it.
    void breakProgressLine();
    // The screens opened since the last call, in order.
    std::vector<FlowScreen> takeOpenedScreens();

private:
    std::ostream& out_;
    TerminalPrompt* prompt_;
    bool redrawInPlace_;
    std::size_t width_;
    bool backupMode_ = true;
    bool jobButtonsEnabled_ = true;
    Labels labels_;
    std::optional<std::string> storage_;
    std::optional<ProgressBar> progress_;
    std::vector<FlowScreen> opened_;
};

}  // namespace stowhaven
