#include "core/AlertPresenter.h"

#include "platform/Log.h"

#include <fmt/ranges.h>

#include <mutex>

namespace stowhaven {

namespace {

class LoggingAlertPresenter final : public AlertPresenter {
public:
    void present(const Alert& alert, Answered onAnswer) override {
        SH_LOG("{}: {} [{}]", alert.title, alert.message, fmt::join(alert.buttons, " | "));
        if (onAnswer) onAnswer({});
    }
};

std::mutex gMutex;
std::shared_ptr<AlertPresenter> gShared;

}  // namespace

void AlertPresenter::showAlert(const std::string& title, const std::string& message,
                               const std::vector<std::string>& buttons, Dismissal onDismissal) {
    Answered onAnswer;
    if (onDismissal) onAnswer = [onDismissal](const AlertAnswer& answer) { onDismissal(answer.buttonIndex); };
    present({.title = title, .message = message, .buttons = buttons}, std::move(onAnswer));
}

std::shared_ptr<AlertPresenter> AlertPresenter::shared() {
    std::lock_guard lock(gMutex);
    if (!gShared) gShared = std::make_shared<LoggingAlertPresenter>();
    return gShared;
}

void AlertPresenter::setShared(std::shared_ptr<AlertPresenter> presenter) {
    std::lock_guard lock(gMutex);
    gShared = std::move(presenter);
}

}  // namespace stowhaven
