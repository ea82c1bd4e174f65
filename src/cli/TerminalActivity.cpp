#include "cli/TerminalActivity.h"

namespace stowhaven {

void TerminalActivity::setLabelText(const std::string& text) {
    if (!active_ || text == label_) return;
    label_ = text;
    out_ << text << std::endl;
}

}  // namespace stowhaven
