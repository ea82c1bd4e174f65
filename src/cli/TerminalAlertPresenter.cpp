#include "cli/TerminalAlertPresenter.h"

namespace stowhaven {

void TerminalAlertPresenter::present(const Alert& alert, Answered onAnswer) {
    out_ << alert.title << ": " << alert.message << '\n';
    if (onAnswer) onAnswer({});
}

}  // namespace stowhaven
