#include "cli/TerminalFlow.h"

#include "cli/TerminalActivity.h"
#include "core/ProgressDisplay.h"
#include "platform/Terminal.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"

#include <chrono>
#include <mutex>

namespace stowhaven {

namespace {

// No load or job takes this long; one that does is left to end with the program.
constexpr std::chrono::hours kLongestWait{48};

std::mutex gCurrentMutex;
TerminalFlow* gCurrent = nullptr;

void drainMainQueue() {
    while (MainQueue::shared().runOnce() > 0) {
    }
}

}  // namespace

TerminalFlow::TerminalFlow(std::ostream& out, Options options)
    : out_(out),
      width_(Terminal::standardErrorWidth()),
      interactive_(options.interactive),
      jobNamed_(options.jobNamed) {
    if (interactive_) prompt_.emplace(input_, out_, width_);
    alerts_ = std::make_shared<TerminalAlerts>(out_, prompt(), std::move(options.presets), width_);
    screen_ = std::make_shared<TerminalScreen>(out_, prompt(), Terminal::isStandardErrorATerminal(), width_);
    alerts_->setBeforeWriting([screen = screen_] { screen->breakProgressLine(); });
    AlertPresenter::setShared(alerts_);
    ProgressDisplay::setShared(std::make_shared<TerminalActivity>(out_, width_));
    controller_ = MainViewController::create(screen_);
    std::lock_guard lock(gCurrentMutex);
    gCurrent = this;
}

TerminalFlow::~TerminalFlow() {
    std::lock_guard lock(gCurrentMutex);
    gCurrent = nullptr;
}

bool TerminalFlow::appear() {
    controller_->viewDidLoad();
    if (jobNamed_) controller_->setAutoBackupDone(true);
    controller_->viewDidAppear();
    MainQueue::shared().runUntil([this] { return !controller_->isLoadUnderWay(); }, kLongestWait);
    drainMainQueue();
    return !controller_->isInitialState();
}

// What waits on the main queue may start a job in turn (an answer given at once, say).
void TerminalFlow::settle() {
    const auto idle = [this] {
        return controller_->state() != MainViewController::State::Working && !controller_->isAutomaticBackupPending() &&
               !controller_->isLoadUnderWay();
    };
    do {
        MainQueue::shared().runUntil(idle, kLongestWait);
        drainMainQueue();
    } while (!idle());
}

bool TerminalFlow::interruptCurrent() {
    std::lock_guard lock(gCurrentMutex);
    return gCurrent != nullptr && gCurrent->interrupt();
}

bool TerminalFlow::interrupt() {
    // A question is open: Ctrl-C answers it, and says yes to the cancel question.
    if (input_.interruptRead()) return true;
    if (controller_->state() != MainViewController::State::Working) return false;
    if (interactive_) {
        MainQueue::shared().async([controller = controller_] { controller->doCancelOperation(); });
    } else {
        NotificationCenter::defaultCenter().post("PROGRESS_CANCELED");
    }
    return true;
}

}  // namespace stowhaven
