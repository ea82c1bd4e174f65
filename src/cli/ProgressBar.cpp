#include "cli/ProgressBar.h"

#include "cli/TextWrap.h"
#include "core/Text.h"
#include "platform/PrintableOutput.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace stowhaven {

namespace {

constexpr int kBarCells = 20;

bool isControl(char byte) { return static_cast<unsigned char>(byte) < 0x20; }

// Newlines, tabs and carriage returns would break the line or its column count.
std::string oneLine(const std::string& text) {
    std::string line = textutil::trimmed(text);
    std::replace_if(line.begin(), line.end(), isControl, ' ');
    return line;
}

std::string barAndPercent(std::optional<double> fraction) {
    if (!fraction) return fmt::format("[{}]   --", std::string(kBarCells, ' '));
    // The bar follows the percent shown, so that it is full exactly when that reads 100%.
    const int percent = static_cast<int>(std::lround(*fraction * 100));
    const int filled = percent * kBarCells / 100;
    return fmt::format("[{}{}] {:3}%", std::string(filled, '#'), std::string(kBarCells - filled, '-'), percent);
}

}  // namespace

ProgressBar::ProgressBar(std::ostream& out, bool redrawInPlace, std::size_t width)
    : out_(out), redrawInPlace_(redrawInPlace), width_(width) {}

void ProgressBar::setText(const std::string& text) {
    std::string line = oneLine(text);
    if (line.empty() || line == text_) return;
    text_ = std::move(line);
    if (redrawInPlace_) {
        redraw();
    } else {
        out_ << text_ << '\n' << std::flush;
    }
}

void ProgressBar::setFraction(double fraction) {
    fraction_ = std::clamp(fraction, 0.0, 1.0);
    if (redrawInPlace_) redraw();
}

void ProgressBar::setBanner(const std::string& banner) {
    banner_ = oneLine(banner);
    if (redrawInPlace_) redraw();
}

void ProgressBar::finish() {
    if (drawnColumns_ == 0) return;
    out_ << '\n' << std::flush;
    drawnLine_.clear();
    drawnColumns_ = 0;
}

void ProgressBar::redraw() {
    std::string line = barAndPercent(fraction_);
    // The banner before the text, which the width may cut.
    if (!banner_.empty()) line += " " + banner_;
    if (!text_.empty()) line += " " + text_;
    // A line as wide as the terminal would wrap on some terminals and leave the cursor below it.
    line = leadingColumns(line, width_ > 0 ? width_ - 1 : 0);
    // Fractions come far more often than the percent changes.
    if (line == drawnLine_) return;
    const std::size_t columns = columnCount(line);
    const std::size_t blanks = drawnColumns_ > columns ? drawnColumns_ - columns : 0;
    PrintableOutput::returnToLineStart(out_);
    out_ << line << std::string(blanks, ' ') << std::flush;
    drawnLine_ = std::move(line);
    drawnColumns_ = columns;
}

}  // namespace stowhaven
