#include "core/AlertPresenter.h"

#include "platform/Log.h"

#include <fmt/ranges.h>

#include <mutex>

namespace stowhaven {

namespace {

class LoggingAlertPresenter final : public AlertPresenter {
public:
    void showAlert(const std::string& title, const std::string& message, const std::vector<std::string>& buttons,
                   Dismissal onDismissal) override {
        SH_LOG("{}: {} [{}]", title, message, fmt::join(buttons, " | "));
        if (onDismissal) onDismissal(0);
    }
};

std::mutex gMutex;
std::shared_ptr<AlertPresenter> gShared;

}  // namespace

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
