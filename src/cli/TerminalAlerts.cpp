#include "cli/TerminalAlerts.h"

#include "cli/TerminalPrompt.h"
#include "cli/TextWrap.h"
#include "flows/MainAlerts.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

namespace {

// The questions whose answer decides whether and how a job runs: nobody answering them
// must not be taken for an answer.
bool jobWaitsFor(const Alert& alert) {
    switch (alert.tag) {
        case MainAlerts::kConfirmBackup:
        case MainAlerts::kConfirmRestore:
        case MainAlerts::kIgnoreAlbums:
        case MainAlerts::kUseImportedData:
        case MainAlerts::kBackupTitle:
        case MainAlerts::kBackupDescription:
        case MainAlerts::kEncryptionKey:
        case MainAlerts::kFirmwareCompatibility:
            return true;
        default:
            return false;
    }
}

}  // namespace

TerminalAlerts::TerminalAlerts(std::ostream& out, TerminalPrompt* prompt, PresetAnswers presets, std::size_t width)
    : out_(out), prompt_(prompt), presets_(std::move(presets)), width_(width) {}

void TerminalAlerts::present(const Alert& alert, Answered onAnswer) {
    shown_.push_back({alert.tag, alert.title, alert.message});
    const auto answerWith = [&](const AlertAnswer& answer) {
        if (onAnswer) onAnswer(answer);
    };
    if (const auto preset = presets_.answerFor(alert)) {
        answerWith(*preset);
        return;
    }
    if (prompt_ == nullptr || alert.buttons.size() <= 1) {
        if (jobWaitsFor(alert)) {
            if (!unanswered_) unanswered_ = alert;
            return;
        }
        if (beforeWriting_) beforeWriting_();
        show(alert);
        answerWith({});
        return;
    }
    if (beforeWriting_) beforeWriting_();
    const TerminalPrompt::Result result = prompt_->ask(alert);
    if (result.kind == TerminalPrompt::Result::Kind::Answered) {
        answerWith(result.answer);
    } else if (alert.tag == MainAlerts::kCancelJob && result.kind == TerminalPrompt::Result::Kind::Interrupted) {
        // A second Ctrl-C confirms the cancel.
        answerWith({1, std::nullopt});
    } else {
        userLeft_ = true;
    }
}

void TerminalAlerts::show(const Alert& alert) {
    const std::string text = alert.message.empty() ? alert.title : fmt::format("{}: {}", alert.title, alert.message);
    fmt::print(out_, "{}\n", wrapped(text, width_));
    out_.flush();
}

}  // namespace stowhaven
