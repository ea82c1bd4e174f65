#pragma once

#include "core/AlertPresenter.h"
#include "core/ProgressDisplay.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven::test {

// Keeps the alerts shown, so that a test can read them and take them away by a button.
class RecordingAlertPresenter final : public AlertPresenter {
public:
    struct Shown : Alert {
        Answered onAnswer;
    };

    void present(const Alert& alert, Answered onAnswer) override { alerts.push_back({alert, std::move(onAnswer)}); }

    // Takes the last alert away by its button, with the text typed into its field.
    void dismissLast(std::size_t buttonIndex = 0, std::optional<std::string> fieldText = std::nullopt) {
        const Answered onAnswer = alerts.back().onAnswer;
        if (onAnswer) onAnswer({buttonIndex, std::move(fieldText)});
    }

    std::vector<Shown> alerts;
};

// Keeps what a progress display would show.
class RecordingProgressDisplay final : public ProgressDisplay {
public:
    bool isActive() const override { return active; }
    void show() override {
        active = true;
        ++shows;
    }
    void hide() override { active = false; }
    void setLabelText(const std::string& text) override { label = text; }
    void setDetailsLabelText(const std::string& text) override { details = text; }

    bool active = false;
    int shows = 0;
    std::string label;
    std::string details;
};

// Puts recording doubles in place of the process's alert presenter and progress display
// for the life of the object, then the logging ones again.
class ScreenPortsScope {
public:
    ScreenPortsScope() {
        AlertPresenter::setShared(alerts);
        ProgressDisplay::setShared(progress);
    }
    ~ScreenPortsScope() {
        AlertPresenter::setShared(nullptr);
        ProgressDisplay::setShared(nullptr);
    }
    ScreenPortsScope(const ScreenPortsScope&) = delete;
    ScreenPortsScope& operator=(const ScreenPortsScope&) = delete;

    std::shared_ptr<RecordingAlertPresenter> alerts = std::make_shared<RecordingAlertPresenter>();
    std::shared_ptr<RecordingProgressDisplay> progress = std::make_shared<RecordingProgressDisplay>();
};

}  // namespace stowhaven::test
