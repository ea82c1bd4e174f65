#pragma once

#include "platform/services/Pasteboard.h"

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// The pasteboard of a terminal, which holds text alone: the text item goes to the
// terminal's clipboard through the OSC 52 sequence (Base64 inside, so that nothing of the
// text reaches the terminal as a control character), or into OUTPUT_FILE when there is one;
// the other items are named in a line on OUT. Its lines are wrapped to WIDTH.
class TerminalPasteboard final : public Pasteboard {
public:
    TerminalPasteboard(std::ostream& out, std::size_t width, std::optional<std::string> outputFile);
    void setItems(const std::vector<PasteboardItem>& items) override;
    // Why the text could not be copied, when it could not.
    const std::optional<std::string>& failure() const { return failure_; }

private:
    void copyText(const std::string& text);
    void say(const std::string& line);

    std::ostream& out_;
    std::size_t width_;
    std::optional<std::string> outputFile_;
    std::optional<std::string> failure_;
};

}  // namespace stowhaven
