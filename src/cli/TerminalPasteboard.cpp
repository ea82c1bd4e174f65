#include "cli/TerminalPasteboard.h"

#include "archive/Base64.h"
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

TerminalPasteboard::TerminalPasteboard(std::ostream& out, std::optional<std::string> outputFile)
    : out_(out), outputFile_(std::move(outputFile)) {}

void TerminalPasteboard::setItems(const std::vector<PasteboardItem>& items) {
    std::string leftBehind;
    for (const PasteboardItem& item : items) {
        if (item.type == "public.text") {
            copyText(item.bytes);
        } else {
            leftBehind += (leftBehind.empty() ? "" : " and ") + itemName(item.type);
        }
    }
    if (!leftBehind.empty()) fmt::print(out_, "Not copied: {}; a terminal's clipboard holds text alone.\n", leftBehind);
}

void TerminalPasteboard::copyText(const std::string& text) {
    if (outputFile_) {
        std::string error;
        if (!FileManager::writeFile(*outputFile_, text, &error)) {
            failure_ = fmt::format("{}: {}", *outputFile_, error);
            return;
        }
        fmt::print(out_, "The package list is in {}.\n", *outputFile_);
        return;
    }
    if (!TerminalControl::send("\x1b]52;c;" + Base64::encode(text) + "\a")) {
        failure_ = "the terminal could not be written to";
        return;
    }
    fmt::print(out_, "The package list is on the terminal's clipboard.\n");
}

}  // namespace stowhaven
