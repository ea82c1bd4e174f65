#include "core/Supervisor.h"

#include "core/ProgressDisplay.h"
#include "platform/Strings.h"
#include "platform/dispatch/MainQueue.h"

#include <fmt/format.h>

#include <any>
#include <chrono>
#include <thread>

namespace stowhaven {

namespace {

// Each step of progress holds the main thread this long, so that the screens can follow.
constexpr std::chrono::milliseconds kProgressPause{5};

template <typename Value>
std::any objectOf(const std::optional<Value>& value) {
    return value ? std::any(*value) : std::any();
}

}  // namespace

void Supervisor::notifyProgress(std::optional<double> progress, std::optional<std::string> message) {
    MainQueue::shared().async([this, update = ProgressUpdate{progress, std::move(message)}] {
        incrementBar(update);
        std::this_thread::sleep_for(kProgressPause);
    });
}

void Supervisor::incrementBar(const ProgressUpdate& update) {
    setProgressMessage(update.displayText);
    NotificationCenter& center = NotificationCenter::defaultCenter();
    center.post("UPDATE_PROGRESS_TEXT", objectOf(update.displayText));
    MainQueue::shared().runOnce();
    center.post("UPDATE_PROGRESS", objectOf(update.progress));
}

std::optional<std::string> Supervisor::progressMessage() const {
    std::lock_guard lock(mutex_);
    return progressMessage_;
}

void Supervisor::setProgressMessage(std::optional<std::string> message) {
    std::lock_guard lock(mutex_);
    progressMessage_ = std::move(message);
}

void Supervisor::showProgressViewWithMessage(const std::string& message) {
    std::string text = message;
    const std::string pleaseWait = Strings::localized("PLEASE_WAIT");
    if (text.find(pleaseWait) == std::string::npos) text += fmt::format("\n{}...", pleaseWait);
    NotificationCenter::defaultCenter().post("UPDATE_PROGRESS_TEXT", text);
}

void Supervisor::showActivityIndicatorViewWithMessage(const std::string& message, bool withCancel) {
    MainQueue::shared().async([message, withCancel] {
        const auto display = ProgressDisplay::shared();
        if (!display->isActive()) display->show();
        display->setLabelText(message);
        display->setDetailsLabelText(Strings::localized(withCancel ? "PLEASE_WAIT_OR_CANCEL" : "PLEASE_WAIT"));
        // Lets the display paint before the work it announces starts.
        MainQueue::shared().runOnce();
    });
}

void Supervisor::dismissActivityIndicatorView() {
    MainQueue::shared().async([] {
        const auto display = ProgressDisplay::shared();
        if (display->isActive()) display->hide();
    });
}

void Supervisor::displayNoInternetConnectionMessage() {
    showAlert(Strings::localized("WARNING"), Strings::localized("NO_INTENET_CONNECTION"));
}

void Supervisor::showAlert(std::string title, std::string message, AlertPresenter::Dismissal onDismissal) {
    MainQueue::shared().async(
        [title = std::move(title), message = std::move(message), onDismissal = std::move(onDismissal)] {
            AlertPresenter::shared()->showAlert(title, message, {Strings::localized("OK_BUTTON")}, onDismissal);
        });
}

}  // namespace stowhaven
