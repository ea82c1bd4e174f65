#include "cli/ProgressLine.h"

#include "core/Text.h"
#include "platform/dispatch/MainQueue.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <cmath>

namespace stowhaven {

namespace {

std::string oneLine(const std::string& text) {
    std::string line = textutil::trimmed(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

}  // namespace

ProgressLine::ProgressLine(std::ostream& out, bool redrawInPlace) : out_(out), redrawInPlace_(redrawInPlace) {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    textObserver_ = center.addObserver("UPDATE_PROGRESS_TEXT", &MainQueue::shared(), [this](const Notification& note) {
        const auto* text = std::any_cast<std::string>(&note.object);
        if (!text || oneLine(*text) == text_) return;
        text_ = oneLine(*text);
        show();
    });
    fractionObserver_ = center.addObserver("UPDATE_PROGRESS", &MainQueue::shared(), [this](const Notification& note) {
        const auto* fraction = std::any_cast<double>(&note.object);
        if (!fraction || !redrawInPlace_) return;
        fraction_ = std::clamp(*fraction, 0.0, 1.0);
        show();
    });
}

ProgressLine::~ProgressLine() {
    NotificationCenter::defaultCenter().removeObserver(textObserver_);
    NotificationCenter::defaultCenter().removeObserver(fractionObserver_);
    if (redrawInPlace_ && shownWidth_ > 0) out_ << "\n" << std::flush;
}

void ProgressLine::show() {
    if (text_.empty()) return;
    if (!redrawInPlace_) {
        fmt::print(out_, "{}\n", text_);
        out_.flush();
        return;
    }
    const std::string percent = fraction_ ? fmt::format("[{:3}%] ", std::lround(*fraction_ * 100)) : "[    ] ";
    const std::string line = percent + text_;
    // Blanks over what a longer line before left on the screen.
    const std::size_t padding = shownWidth_ > line.size() ? shownWidth_ - line.size() : 0;
    fmt::print(out_, "\r{}{}", line, std::string(padding, ' '));
    out_.flush();
    shownWidth_ = line.size();
}

}  // namespace stowhaven
