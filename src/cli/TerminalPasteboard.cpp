#include "cli/TerminalPasteboard.h"

#include "archive/Base64.h"
#include "cli/TextWrap.h"
#include "platform/FileManager.h"
#include "platform/TerminalControl.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

namespace {

std::string itemName(const std::string& type) {
    if (type == "public.url") return "the web address";
    if (type == "public.png") return "the icon";
    return type;
}

}  // namespace

TerminalPasteboard::TerminalPasteboard(std::ostream& out, std::size_t width, std::optional<std::string> outputFile)
    : out_(out), width_(width), outputFile_(std::move(outputFile)) {}

void TerminalPasteboard::setItems(const std::vector<PasteboardItem>& items) {
    std::string leftBehind;
    for (const PasteboardItem& item : items) {
        if (item.type == "public.text") {
            copyText(item.bytes);
        } else {
            leftBehind += (leftBehind.empty() ? "" : " and ") + itemName(item.type);
        }
    }
    if (!leftBehind.empty()) say(fmt::format("Not copied: {}; a terminal's clipboard holds text alone.", leftBehind));
}

void TerminalPasteboard::copyText(const std::string& text) {
    if (outputFile_) {
        std::string error;
        if (!FileManager::writeFile(*outputFile_, text, &error)) {
            failure_ = fmt::format("{}: {}", *outputFile_, error);
            return;
        }
        say(fmt::format("The package list is in {}.", *outputFile_));
        return;
    }
    if (!TerminalControl::send("\x1b]52;c;" + Base64::encode(text) + "\a")) {
        failure_ = "the terminal could not be written to";
        return;
    }
    say("The package list is on the terminal's clipboard.");
}

void TerminalPasteboard::say(const std::string& line) { out_ << wrapped(line, width_) << "\n"; }

}  // namespace stowhaven
