#include "cli/TerminalAlertPresenter.h"

namespace stowhaven {

void TerminalAlertPresenter::showAlert(const std::string& title, const std::string& message,
                                       const std::vector<std::string>& /*buttons*/, Dismissal onDismissal) {
    out_ << title << ": " << message << '\n';
    if (onDismissal) onDismissal(0);
}

}  // namespace stowhaven
