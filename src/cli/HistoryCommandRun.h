#pragma once

#include "cli/TerminalAlerts.h"
#include "cli/TerminalPrompt.h"
#include "platform/TerminalInput.h"

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// What the history and devices commands share while they drive a history view: its
// questions go to the terminal when there is one (never to a pipe), and its reports to
// ERRORS; the engine's answers are waited for on the main queue.
class HistoryCommandRun {
public:
    explicit HistoryCommandRun(std::ostream& errors);
    ~HistoryCommandRun();
    HistoryCommandRun(const HistoryCommandRun&) = delete;
    HistoryCommandRun& operator=(const HistoryCommandRun&) = delete;

    // A question can be put to the user.
    bool canAsk() const { return prompt_.has_value(); }
    // Whether the view put up the alert of that tag.
    bool shown(int tag) const;
    // Without --yes and without a terminal, COMMAND can't ask: says so, and answers false.
    bool mayGoOn(bool yes, const std::string& command);

private:
    std::ostream& errors_;
    TerminalInput input_;
    std::optional<TerminalPrompt> prompt_;
    std::shared_ptr<TerminalAlerts> alerts_;
};

// Serves the main queue until BUSY answers false and nothing waits there.
void waitUntilIdle(const std::function<bool()>& busy);

}  // namespace stowhaven
