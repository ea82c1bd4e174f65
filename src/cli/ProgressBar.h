#pragma once

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// The progress of a job. On a terminal one line redrawn in place,
// "[########------------]  42% Uploading data: Notes", cut one column short of the width so
// that it never wraps, with blanks over the rest of a longer line drawn before; until a
// fraction is known the bar reads "[                    ]   --". Elsewhere (a log file, a
// pipe) a plain line each time the text changes, and fractions alone print nothing.
// Multi-line texts are shown on one line; an empty text keeps the last one.
class ProgressBar {
public:
    ProgressBar(std::ostream& out, bool redrawInPlace, std::size_t width);

    void setText(const std::string& text);
    // Clamped to 0...1.
    void setFraction(double fraction);
    // A transfer's banner at the end of a redrawn line; nothing elsewhere, as it changes
    // with every percent.
    void setBanner(const std::string& banner);
    // Ends a redrawn line with a newline, so that what follows starts on a fresh line. Idempotent.
    void finish();

private:
    void redraw();

    std::ostream& out_;
    bool redrawInPlace_;
    std::size_t width_;
    std::string text_;
    std::string banner_;
    std::optional<double> fraction_;
    std::string drawnLine_;
    std::size_t drawnColumns_ = 0;
};

}  // namespace stowhaven
