#include "cli/HistoryCommandRun.h"

#include "cli/PresetAnswers.h"
#include "platform/Terminal.h"
#include "platform/dispatch/MainQueue.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <chrono>

namespace stowhaven {

namespace {

// No engine request takes this long; one that does is left to end with the program.
constexpr std::chrono::hours kLongestWait{1};

}  // namespace

HistoryCommandRun::HistoryCommandRun(std::ostream& errors) : errors_(errors) {
    const std::size_t width = Terminal::standardErrorWidth();
    if (Terminal::isStandardInputATerminal()) prompt_.emplace(input_, errors_, width);
    alerts_ = std::make_shared<TerminalAlerts>(errors_, prompt_ ? &*prompt_ : nullptr, PresetAnswers{}, width);
    AlertPresenter::setShared(alerts_);
}

// Later reports of the program go on as before: shown, without a question.
HistoryCommandRun::~HistoryCommandRun() {
    AlertPresenter::setShared(
        std::make_shared<TerminalAlerts>(errors_, nullptr, PresetAnswers{}, Terminal::standardErrorWidth()));
}

bool HistoryCommandRun::shown(int tag) const {
    const auto& shown = alerts_->shown();
    return std::any_of(shown.begin(), shown.end(), [tag](const auto& alert) { return alert.tag == tag; });
}

bool HistoryCommandRun::mayGoOn(bool yes, const std::string& command) {
    if (yes || canAsk()) return true;
    fmt::print(errors_, "stowhaven: {} asks first, and there is no terminal to ask on: add --yes\n", command);
    return false;
}

void waitUntilIdle(const std::function<bool()>& busy) {
    // What waits on the queue may start another request in turn.
    do {
        MainQueue::shared().runUntil([&busy] { return !busy(); }, kLongestWait);
        while (MainQueue::shared().runOnce() > 0) {
        }
    } while (busy());
}

}  // namespace stowhaven
