#include "cli/TerminalActivity.h"

#include "cli/TextWrap.h"

namespace stowhaven {

void TerminalActivity::setLabelText(const std::string& text) {
    if (!active_ || text == label_) return;
    label_ = text;
    out_ << wrapped(text, width_) << std::endl;
}

}  // namespace stowhaven
